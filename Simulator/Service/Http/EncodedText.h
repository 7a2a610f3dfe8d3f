#pragma once

#include <string>

namespace vorlane::service {

/// Percent-encodes a string, as messages to an app carry it.
std::string encodedText(const std::string& text);

}  // namespace vorlane::service

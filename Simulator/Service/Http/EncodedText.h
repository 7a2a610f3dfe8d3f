#pragma once

#include <string>

namespace vorlane::service {

/// Text as messages to an app carry it: percent-encoded.
std::string encodedText(const std::string& text);

}  // namespace vorlane::service

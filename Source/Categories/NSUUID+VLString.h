#pragma once

#include <string>

namespace vorlane {

/// Returns a new random UUID in upper case with dashes.
std::string vl_newUUIDString();

}  // namespace vorlane

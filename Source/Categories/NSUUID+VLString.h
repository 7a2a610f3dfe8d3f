#pragma once

#include <string>

namespace vorlane {

/// A new random UUID, upper-case with dashes.
std::string vl_newUUIDString();

}  // namespace vorlane

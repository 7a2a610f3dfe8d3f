#pragma once

#include <optional>
#include <string>

namespace vorlane {

/// `vl_unixTimestampInMilliseconds`: a time in seconds since 1970 as whole milliseconds in decimal ("%.0f"); nothing
/// formats as "0".
std::string vl_unixTimestampInMilliseconds(std::optional<double> time);

}  // namespace vorlane

#pragma once

#include <optional>
#include <string>

namespace vorlane {

/// Returns the time of the platform's clock, in seconds since 1970.
double vl_now();

/// `vl_unixTimestampInMilliseconds` formats a time in seconds since 1970 as whole milliseconds ("%.0f"). `nullopt`
/// formats as "0".
std::string vl_unixTimestampInMilliseconds(std::optional<double> time);

}  // namespace vorlane

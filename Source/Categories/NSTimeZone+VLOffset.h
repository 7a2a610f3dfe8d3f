#pragma once

#include <string>

#include "Platform/NSTimeZone.h"

namespace vorlane {

/// `VL_GMTOffsetAsMinutes` returns the offset in whole minutes with a percent-encoded sign: "%2B330", "%2D300", and
/// "%2D0" for less than one minute east.
std::string VL_GMTOffsetAsMinutes(const NSTimeZone& zone);
/// Returns the same with a plain sign: "+330", "-300", "-0".
std::string vl_offsetAsSignedMinutes(const NSTimeZone& zone);

}  // namespace vorlane

#pragma once

#include <string>

#include "Platform/NSTimeZone.h"

namespace vorlane {

/// `VL_GMTOffsetAsMinutes`: the offset in whole minutes with a pre-encoded sign, "%2B330" or "%2D300"; "%2D0" below one
/// minute east.
std::string VL_GMTOffsetAsMinutes(const NSTimeZone& zone);
/// The same with a plain sign: "+330", "-300", "-0".
std::string vl_offsetAsSignedMinutes(const NSTimeZone& zone);

}  // namespace vorlane

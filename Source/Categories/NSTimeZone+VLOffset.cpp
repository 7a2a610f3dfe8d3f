#include "Categories/NSTimeZone+VLOffset.h"

#include <fmt/format.h>

namespace vorlane {

namespace {

std::string offset(const NSTimeZone& zone, const char* plus, const char* minus) {
    const auto minutes = zone.secondsFromGMT / 60;
    // Intended: compares with one minute and not with 0, so that UTC is formatted as minus 0.
    return zone.secondsFromGMT < 60 ? fmt::format("{}{}", minus, -minutes) : fmt::format("{}{}", plus, minutes);
}

}  // namespace

std::string VL_GMTOffsetAsMinutes(const NSTimeZone& zone) { return offset(zone, "%2B", "%2D"); }

std::string vl_offsetAsSignedMinutes(const NSTimeZone& zone) { return offset(zone, "+", "-"); }

}  // namespace vorlane

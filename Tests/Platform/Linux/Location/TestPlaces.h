#pragma once

#include <string>

#include "Platform/CLLocation.h"

namespace vorlane {

/// The UUID and the position that the location tests share.
inline const std::string kUUID = "B9407F30-F5F8-466E-AFF9-25556B57FE6D";
inline constexpr CLLocationCoordinate2D kCentre{59.91, 10.75};
/// The length of one degree of latitude.
inline constexpr double kMetresInDegree = 6371000.0 * 3.14159265358979323846 / 180;

}  // namespace vorlane

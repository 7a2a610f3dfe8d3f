#pragma once

#include "Public/VLExport.h"

namespace vorlane {

/// A position in degrees. North and east are positive.
struct CLLocationCoordinate2D {
    double latitude = 0;
    double longitude = 0;

    bool operator==(const CLLocationCoordinate2D&) const = default;
};

/// Whether the latitude is within ±90 and the longitude within ±180 degrees. False for NaN.
VORLANE_EXPORT bool CLLocationCoordinate2DIsValid(const CLLocationCoordinate2D& coordinate);

/// The great-circle distance in metres on a sphere of radius 6371 km.
VORLANE_EXPORT double CLDistanceBetween(const CLLocationCoordinate2D& first, const CLLocationCoordinate2D& second);

/// One fix of the device's position.
struct CLLocation {
    CLLocationCoordinate2D coordinate = {};
    /// Radius of uncertainty in metres. A negative value marks an invalid coordinate.
    double horizontalAccuracy = 0;
    /// Time of the fix in seconds since 1970.
    double timestamp = 0;

    bool operator==(const CLLocation&) const = default;
};

}  // namespace vorlane

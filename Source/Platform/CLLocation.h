#pragma once

#include "Public/VLExport.h"

namespace vorlane {

/// A place on the globe, in degrees; north and east are positive.
struct CLLocationCoordinate2D {
    double latitude = 0;
    double longitude = 0;

    bool operator==(const CLLocationCoordinate2D&) const = default;
};

/// Whether the place is on the globe: what is not finite is not.
VORLANE_EXPORT bool CLLocationCoordinate2DIsValid(const CLLocationCoordinate2D& place);

/// The distance along the great circle, in metres, on a globe of radius 6371 km.
VORLANE_EXPORT double CLDistanceBetween(const CLLocationCoordinate2D& first, const CLLocationCoordinate2D& second);

/// One fix of the device's position.
struct CLLocation {
    CLLocationCoordinate2D coordinate = {};
    /// Radius of uncertainty in metres; negative: the coordinate is not valid.
    double horizontalAccuracy = 0;
    /// When the fix was made, in seconds since 1970.
    double timestamp = 0;

    bool operator==(const CLLocation&) const = default;
};

}  // namespace vorlane

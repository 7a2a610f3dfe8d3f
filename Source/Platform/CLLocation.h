#pragma once

namespace vorlane {

/// A place on the globe, in degrees; north and east are positive.
struct CLLocationCoordinate2D {
    double latitude = 0;
    double longitude = 0;

    bool operator==(const CLLocationCoordinate2D&) const = default;
};

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

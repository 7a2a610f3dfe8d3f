#pragma once

#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// A geofence of an app.
struct Region {
    /// The identifier as a string, whatever its type in the document.
    std::string id;
    /// Degrees.
    double latitude = 0;
    double longitude = 0;
    /// The object that phones receive: "id", "latitude", "longitude", "radius" (metres), and any further keys, such as
    /// "name" and "plotwise_id".
    Dictionary document;

    /// Reads a region. Throws MalformedRequest without a usable identifier (a string or a number), centre or radius, or
    /// for a "name" or "plotwise_id" of the wrong type.
    static Region fromPayload(const Dictionary& payload);

    /// The great-circle distance to its centre, in metres.
    double distanceTo(double otherLatitude, double otherLongitude) const;
};

}  // namespace vorlane::service

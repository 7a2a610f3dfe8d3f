#pragma once

#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// A geofence of an app's: a circle that phones nearby are told to watch. A plain value.
struct Region {
    /// The identifier as text, whatever it is in the document.
    std::string id;
    /// Degrees.
    double latitude = 0;
    double longitude = 0;
    /// All of it, as phones receive it: "id", "latitude", "longitude", "radius" (metres), and whatever else there is,
    /// "name" and "plotwise_id" above all.
    Dictionary document;

    /// The region that the operator describes. Throws MalformedRequest for one without a usable identifier (text or a
    /// number), centre or radius, or with a "name" or "plotwise_id" of the wrong kind.
    static Region fromPayload(const Dictionary& payload);

    /// The great-circle distance of its centre, in metres.
    double distanceTo(double otherLatitude, double otherLongitude) const;
};

}  // namespace vorlane::service

#pragma once

#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// Matches beacons; "*" matches any value.
struct BeaconPattern {
    /// In capitals.
    std::string uuid;
    /// Decimal, from 0 to 65535.
    std::string major;
    std::string minor;

    /// Throws MalformedRequest unless each is "*", or a UUID and numbers in the range of a major and minor.
    static BeaconPattern fromTexts(const std::string& uuid, const std::string& major, const std::string& minor);
    /// Reads a beacon or a region that a phone reported: "uuid", which is never "*", "major" and "minor", which may be
    /// strings or numbers. Throws MalformedRequest.
    static BeaconPattern fromPayload(const Dictionary& payload);

    /// Whether it matches exactly one beacon.
    bool isExact() const;
};

}  // namespace vorlane::service

#pragma once

#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// Which beacons are meant; "*" stands for any. A plain value.
struct BeaconPattern {
    /// In capitals.
    std::string uuid;
    /// Decimal, from 0 to 65535.
    std::string major;
    std::string minor;

    /// Throws MalformedRequest for what is neither "*" nor a UUID, or a number in the range of a major or minor.
    static BeaconPattern fromTexts(const std::string& uuid, const std::string& major, const std::string& minor);
    /// What a phone tells of a beacon or a region: "uuid", which is never "*", "major" and "minor", which may be texts
    /// or numbers. Throws MalformedRequest.
    static BeaconPattern fromPayload(const Dictionary& payload);

    /// Whether it means one beacon alone.
    bool isExact() const;
};

}  // namespace vorlane::service

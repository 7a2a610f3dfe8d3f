#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// A message that a phone shows as a local notification, for a geofence or a beacon.
struct LocalMessage {
    std::string pushtext;
    std::optional<std::string> phash;
    /// The name of a sound resource of the app, without its extension.
    std::optional<std::string> sound;
    Dictionary metadata;

    /// Reads a message: "pushtext", and optionally "phash", "sound" and "metadata". Throws MalformedRequest, also for
    /// any other key.
    static LocalMessage fromPayload(const Dictionary& payload);
    /// Returns the object that `fromPayload()` reads.
    Dictionary asDictionary() const;

    /// Returns the message as an app receives it: "appkey", "pushtext" (percent-encoded), "phash" if there is one, and
    /// "messagecontent" (the percent-encoded JSON object of sound and metadata) if there is either.
    Dictionary asTemplate(const std::string& appKey) const;
};

}  // namespace vorlane::service

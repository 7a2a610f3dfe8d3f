#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// A message that a phone shows as a local notification, for a geofence or a beacon. A plain value.
struct LocalMessage {
    std::string pushtext;
    std::optional<std::string> phash;
    /// The name of a sound in the app's bundle, without its extension.
    std::optional<std::string> sound;
    Dictionary metadata;

    /// The message that the operator describes: "pushtext", and "phash", "sound" and "metadata" where it has them.
    /// Throws MalformedRequest, also for any other key.
    static LocalMessage fromPayload(const Dictionary& payload);
    /// The same as an object, which `fromPayload()` reads back.
    Dictionary asDictionary() const;

    /// As an app receives it: "appkey"; "pushtext" percent-encoded; "phash" where there is one; and where there is a
    /// sound or metadata, "messagecontent", their percent-encoded JSON object.
    Dictionary asTemplate(const std::string& appKey) const;
};

}  // namespace vorlane::service

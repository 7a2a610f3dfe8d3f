#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Public/VLValue.h"

namespace vorlane::service {

/// A campaign of local notifications: its texts and the users it excludes.
struct Campaign {
    /// One of the texts that are compared.
    struct Split {
        /// A string or a number, as the operator set it.
        Value id;
        /// `nullopt`: the text that the application passed.
        std::optional<std::string> messageText;
        /// The name of a sound resource of the app, without its extension.
        std::optional<std::string> sound;
    };

    std::string token;
    // Strings or numbers; null if absent.
    Value campaignId;
    Value templateId;
    /// Never empty.
    std::vector<Split> splits;
    /// The users who receive no notification.
    std::set<std::string> filteredTrackingIds;

    /// Reads a campaign. All keys are optional: "campaignId", "templateId", "splits" (objects with "splitId",
    /// "messageText" and "sound") and "filteredTrackingIds". Throws MalformedRequest, also for any other key.
    static Campaign fromPayload(const std::string& token, const Dictionary& payload);
    /// Returns the object that `fromPayload()` reads.
    Dictionary asDictionary() const;
};

}  // namespace vorlane::service

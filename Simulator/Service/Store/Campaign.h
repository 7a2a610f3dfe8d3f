#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Public/VLValue.h"

namespace vorlane::service {

/// What the local notifications of one campaign say, and to whom. A plain value.
struct Campaign {
    /// One of the texts that are tried against each other.
    struct Split {
        /// A text or a number, as the operator gave it.
        Value id;
        /// Nothing: the text that the application had in mind.
        std::optional<std::string> messageText;
        /// The name of a sound in the app's bundle, without its extension.
        std::optional<std::string> sound;
    };

    std::string token;
    // Texts or numbers; null where there is none.
    Value campaignId;
    Value templateId;
    /// At least one.
    std::vector<Split> splits;
    /// Who is left out.
    std::set<std::string> filteredTrackingIds;

    /// The campaign that an operator describes: as wished "campaignId", "templateId", "splits" (a list of objects with
    /// "splitId", "messageText" and "sound") and "filteredTrackingIds". Throws MalformedRequest, also for any other
    /// key.
    static Campaign fromPayload(const std::string& token, const Dictionary& payload);
    /// The same as an object, which `fromPayload()` reads back.
    Dictionary asDictionary() const;
};

}  // namespace vorlane::service

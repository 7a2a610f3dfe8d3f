#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// A request for the text of a local notification, and its answer.
struct SplitReport {
    double time = 0;
    std::string trackingId;
    std::optional<std::string> campaignToken;
    std::string pushText;
    /// The phash of the notification that opened the app last; empty for none.
    std::string openedPhash;
    /// `nullopt` if the user is excluded.
    std::optional<std::string> phash;
    /// The id of the campaign's split, or null.
    Value splitId;
};

}  // namespace vorlane::service

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

/// A message in the mailbox that the simulated phone's service keeps.
struct SimulatedInboxMessage {
    /// 0: the phone chooses an id that no other message has.
    std::uint64_t messageId = 0;
    /// The user whose mailbox has the message; `nullopt`: every user's.
    std::optional<std::string> trackingId = std::nullopt;
    std::string subject = {};
    std::string htmlContent = {};
    std::optional<std::string> label = std::nullopt;
    std::optional<std::string> url = std::nullopt;
    std::optional<std::string> phash = std::nullopt;
    bool isRead = false;
    /// Seconds since 1970; `nullopt`: the time at which the message is added.
    std::optional<double> created = std::nullopt;
    /// Seconds since 1970; `nullopt`: 30 days after `created`.
    std::optional<double> end = std::nullopt;
    /// The URL of the card's image. The test answers the request for it.
    std::optional<std::string> cardImage = std::nullopt;
    std::optional<std::string> cardBackgroundColor = std::nullopt;
    std::optional<std::string> cardForegroundColor = std::nullopt;
    Dictionary metadata = {};
};

}  // namespace vorlane

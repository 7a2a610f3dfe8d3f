#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Public/VLInboxMessage.h"
#include "Public/VLValue.h"

namespace vorlane {

/// An entry of the service's list of messages, and of the list of what the device holds.
struct VLInboxEntry {
    std::uint64_t notificationId = 0;
    std::int64_t read = 0;

    bool operator==(const VLInboxEntry&) const = default;
};

/// One row of RICH_INBOX. `nullopt` stands for NULL.
struct VLInboxRecord {
    std::uint64_t notificationId = 0;
    std::optional<std::string> subject;
    std::optional<std::string> content;
    std::optional<std::string> label;
    std::optional<std::string> url;
    std::optional<std::string> phash;
    std::optional<std::int64_t> read;
    std::optional<double> created;
    std::optional<double> end;
    std::optional<std::string> cardUrl;
    std::optional<std::string> backgroundColor;
    std::optional<std::string> foregroundColor;
    /// A JSON string.
    std::optional<std::string> metadata;

    /// Returns the record of a message that the service sent. Fields of the wrong type are `nullopt`; numbers may be
    /// sent as strings. The id is the requested one, whatever the answer contains.
    static VLInboxRecord recordWithAnswer(std::uint64_t notificationId, const Dictionary& answer);

    /// Returns the message's content, with the page prepared for display.
    VLInboxMessage::Content messageContent() &&;
};

/// Returns the entries of the service's list that have a usable id, in the same order.
std::vector<VLInboxEntry> inboxEntriesWithArray(const Array& elements);

}  // namespace vorlane

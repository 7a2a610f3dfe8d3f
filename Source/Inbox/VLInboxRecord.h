#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Public/VLInboxMessage.h"
#include "Public/VLValue.h"

namespace vorlane {

/// A message as the service lists it and as the database tells it apart.
struct VLInboxEntry {
    std::uint64_t notificationId = 0;
    std::int64_t read = 0;

    bool operator==(const VLInboxEntry&) const = default;
};

/// One row of RICH_INBOX, as it is stored. Nothing is NULL.
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
    /// JSON text.
    std::optional<std::string> metadata;

    /// The record of a message that the service answered with. Fields of the wrong kind are nothing; numbers may be
    /// written as text. The id is the one that was asked for, whatever the answer says.
    static VLInboxRecord recordWithAnswer(std::uint64_t notificationId, const Dictionary& answer);

    /// The message's content, its page prepared for display.
    VLInboxMessage::Content messageContent() &&;
};

/// The messages that the service lists: the elements with a usable id, as they come.
std::vector<VLInboxEntry> inboxEntriesWithArray(const Array& elements);

}  // namespace vorlane

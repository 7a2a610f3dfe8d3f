#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Inbox/VLInboxConnection.h"
#include "Public/VLInboxMessage.h"

namespace vorlane {

/// The messages in the rows of one user, expired ones included, in the order of the list: newest first, then the higher
/// id.
using VLInboxRows = std::vector<std::shared_ptr<VLInboxMessage>>;

/// The messages that have not expired, each id once.
VLInboxRows visibleRows(const VLInboxRows& rows, double now);
/// How many different messages are unread and have not expired.
std::size_t unreadCount(const VLInboxRows& rows, double now);

/// The rows of one user, kept in memory while an update inserts one message after another and shows the whole list
/// after each. They stand only as long as nobody else has written to the file: the file's own change counter tells.
/// The store's alone, on its queue.
class VLInboxKeptRows {
public:
    /// From now on rows are kept, until as many calls of `end()`.
    void begin() { ++users_; }
    void end();

    bool isKeeping() const { return users_ > 0; }

    using Stamp = VLInboxConnection::Stamp;

    /// What was kept for that user; null when there is nothing, or the file has changed since.
    std::shared_ptr<const VLInboxRows> rows(const std::string& trackingId, const std::optional<Stamp>& now) const;
    /// Keeps rows that were read after the file had that state.
    void keep(const std::string& trackingId, std::shared_ptr<const VLInboxRows> rows,
              const std::optional<Stamp>& stamp);
    /// Adds a row, when its insertion was the only change from the one state to the other.
    void add(const std::string& trackingId, std::shared_ptr<VLInboxMessage> row, const std::optional<Stamp>& before,
             const std::optional<Stamp>& after);

private:
    // The store's queue only.
    std::size_t users_ = 0;
    std::string trackingId_;
    std::optional<Stamp> stamp_;
    std::shared_ptr<const VLInboxRows> rows_;
};

}  // namespace vorlane

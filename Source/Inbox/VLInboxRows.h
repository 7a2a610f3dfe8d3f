#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Inbox/VLInboxConnection.h"
#include "Public/VLInboxMessage.h"

namespace vorlane {

/// The messages in the rows of one user, expired ones included, in the order of the list: newest first, then by
/// descending id.
using VLInboxRows = std::vector<std::shared_ptr<VLInboxMessage>>;

/// Returns the messages that have not expired, each id once.
VLInboxRows visibleRows(const VLInboxRows& rows, double now);
/// Returns the number of different messages that are unread and have not expired.
std::size_t unreadCount(const VLInboxRows& rows, double now);

/// The rows of one user, kept in memory while an update inserts one message after another and shows the whole list
/// after each. They are valid until somebody else writes to the file, which its change counter shows. Used by the store
/// alone, on its queue.
class VLInboxKeptRows {
public:
    /// Rows are kept until every `begin()` has been matched by an `end()`.
    void begin() { ++users_; }
    void end();

    bool isKeeping() const { return users_ > 0; }

    using Stamp = VLInboxConnection::Stamp;

    /// Returns the rows kept for that user; null if there are none, or if the file has changed since.
    std::shared_ptr<const VLInboxRows> rows(const std::string& trackingId, const std::optional<Stamp>& now) const;
    /// Keeps rows that were read while the file had that state.
    void keep(const std::string& trackingId, std::shared_ptr<const VLInboxRows> rows,
              const std::optional<Stamp>& stamp);
    /// Adds a row whose insertion was the only change between the two states. Otherwise has no effect.
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

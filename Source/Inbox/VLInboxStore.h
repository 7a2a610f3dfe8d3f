#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Inbox/VLInboxDatabaseManager.h"
#include "Inbox/VLInboxRecord.h"
#include "Inbox/VLInboxRows.h"
#include "Platform/NSError.h"
#include "Public/VLValue.h"

namespace vorlane {

class VLInboxService;

/// The messages in the inbox database. Each operation opens the file, does its work and closes it again; every one
/// concerns the messages of one user alone.
///
/// Failures are logged. An error is `VLErrorDomainInbox` code 0 with SQLite's result as "sqlite3_errcode" or
/// "sqlite3_step result" in its user information. A file that turns out to be damaged is replaced by an empty one.
/// The inbox service's background queue only.
class VLInboxStore {
public:
    /// The messages that it reads are made for `service`.
    VLInboxStore(std::shared_ptr<const VLInboxDatabaseManager> databaseManager, std::weak_ptr<VLInboxService> service);

    // What is there. Nothing, or null, when it cannot be read.

    /// Every row by descending id, as the state hash is made of them.
    std::optional<std::vector<VLInboxEntry>> stateEntries(const std::string& trackingId);
    struct Local {
        std::vector<VLInboxEntry> entries;
        std::vector<std::uint64_t> trash;
    };
    /// What an update compares with: the rows in no order, and the ids of the messages that were deleted here.
    std::optional<Local> local(const std::string& trackingId);
    std::optional<std::size_t> unreadCount(const std::string& trackingId, double now);
    struct List {
        std::shared_ptr<const VLInboxRows> rows;
        std::optional<std::size_t> unreadCount;
    };
    /// Both over one connection.
    List list(const std::string& trackingId, double now);
    std::optional<Data> cardImage(std::uint64_t notificationId, const std::string& trackingId);

    // Changes. Each is there after a crash, or it is not.

    bool insert(VLInboxRecord record, const std::string& trackingId);
    /// Whether each was removed.
    std::vector<bool> removeRows(const std::vector<std::uint64_t>& notificationIds, const std::string& trackingId);
    /// Whether each was set.
    std::vector<bool> setReadFlags(const std::vector<VLInboxEntry>& entries, const std::string& trackingId);
    std::optional<NSError> setCardImage(const Data& image, std::uint64_t notificationId, const std::string& trackingId);

    struct ReadResult {
        bool wasRead = false;
        std::optional<NSError> error;
    };
    /// Marks a message as read, unless it was.
    ReadResult markRead(std::uint64_t notificationId, const std::string& trackingId);
    /// Removes the message and remembers in the trash that it was; both or neither.
    std::optional<NSError> moveToTrash(std::uint64_t notificationId, const std::string& trackingId);

    /// Between the two, reading the rows after an insertion costs next to nothing. May be nested.
    void beginKeepingRows() { keptRows_.begin(); }
    void endKeepingRows() { keptRows_.end(); }

private:
    class Operation;

    std::shared_ptr<const VLInboxRows> rows(Operation& operation, const std::string& trackingId);
    std::optional<std::size_t> unreadCount(Operation& operation, const std::string& trackingId, double now);
    std::shared_ptr<VLInboxMessage> message(VLInboxRecord record) const;

    // Fixed at construction.
    const std::shared_ptr<const VLInboxDatabaseManager> databaseManager_;
    const std::weak_ptr<VLInboxService> service_;
    // The queue only.
    VLInboxKeptRows keptRows_;
};

}  // namespace vorlane

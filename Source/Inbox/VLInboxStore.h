#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "Inbox/VLInboxDatabaseManager.h"
#include "Inbox/VLInboxRecord.h"
#include "Inbox/VLInboxRows.h"
#include "Platform/NSError.h"
#include "Public/VLValue.h"

namespace vorlane {

class VLInboxOperation;
class VLInboxService;

/// The messages in the inbox database. Each operation opens the file, does its work and closes the file; each concerns
/// the messages of one user.
///
/// Failures are logged. An error is `VLErrorDomainInbox` code 0 with SQLite's result as "sqlite3_errcode" or
/// "sqlite3_step result" in its user information. An operation that finds the file damaged has the database checked,
/// and repaired where that is needed, and runs once more. The inbox service's background queue only.
class VLInboxStore {
public:
    /// Messages are created for `service`.
    VLInboxStore(std::shared_ptr<const VLInboxDatabaseManager> databaseManager, std::weak_ptr<VLInboxService> service);

    // Reading. The result is `nullopt` or null if the database cannot be read.

    /// Returns every row by descending id, as the state hash needs them.
    std::optional<std::vector<VLInboxEntry>> stateEntries(const std::string& trackingId);
    struct Local {
        std::vector<VLInboxEntry> entries;
        std::vector<std::uint64_t> trash;
    };
    /// Returns what an update compares with: the rows in no particular order, and the ids of the messages deleted on
    /// this device.
    std::optional<Local> local(const std::string& trackingId);
    std::optional<std::size_t> unreadCount(const std::string& trackingId, double now);
    struct List {
        std::shared_ptr<const VLInboxRows> rows;
        std::optional<std::size_t> unreadCount;
    };
    /// Reads both over one connection.
    List list(const std::string& trackingId, double now);
    std::optional<Data> cardImage(std::uint64_t notificationId, const std::string& trackingId);

    // Changes. Each is one transaction, flushed to the disk when the operation returns.

    bool insert(const VLInboxRecord& record, const std::string& trackingId);
    /// Returns for each id whether the row was removed.
    std::vector<bool> removeRows(const std::vector<std::uint64_t>& notificationIds, const std::string& trackingId);
    /// Returns for each entry whether the flag was set.
    std::vector<bool> setReadFlags(const std::vector<VLInboxEntry>& entries, const std::string& trackingId);
    std::optional<NSError> setCardImage(const Data& image, std::uint64_t notificationId, const std::string& trackingId);

    struct ReadResult {
        bool wasRead = false;
        std::optional<NSError> error;
    };
    /// Marks a message as read, unless it is already.
    ReadResult markRead(std::uint64_t notificationId, const std::string& trackingId);
    /// Removes the message and adds its id to the trash.
    std::optional<NSError> moveToTrash(std::uint64_t notificationId, const std::string& trackingId);

    /// Between the two calls, reading the rows after an insertion needs no query. Calls may be nested.
    void beginKeepingRows() { keptRows_.begin(); }
    void endKeepingRows() { keptRows_.end(); }

private:
    /// Runs `work` with an operation; once more if SQLite reported damage.
    template <class Work>
    std::invoke_result_t<Work, VLInboxOperation&> perform(Work work);
    template <class Element, class Change>
    std::vector<bool> changeEach(const std::vector<Element>& elements, Change change);

    std::shared_ptr<const VLInboxRows> rows(VLInboxOperation& operation, const std::string& trackingId);
    std::optional<std::size_t> unreadCount(VLInboxOperation& operation, const std::string& trackingId, double now);
    static bool isRead(VLInboxOperation& operation, std::uint64_t notificationId, const std::string& trackingId);
    std::shared_ptr<VLInboxMessage> message(VLInboxRecord record) const;

    // Fixed at construction.
    const std::shared_ptr<const VLInboxDatabaseManager> databaseManager_;
    const std::weak_ptr<VLInboxService> service_;
    // The queue only.
    VLInboxKeptRows keptRows_;
};

}  // namespace vorlane

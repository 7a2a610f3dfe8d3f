#include "Inbox/VLInboxStore.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <unordered_set>
#include <utility>

#include "Core/Base/VLError.h"
#include "Inbox/VLInboxStatement.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

constexpr const char* kSelectLocal = "SELECT NOTIF_ID,READ FROM RICH_INBOX WHERE TRACKING_ID = ?";
constexpr const char* kSelectTrash = "SELECT NOTIF_ID FROM RICH_TRASH WHERE TRACKING_ID = ?";
constexpr const char* kDelete = "DELETE FROM RICH_INBOX WHERE NOTIF_ID = ? AND TRACKING_ID = ?";
constexpr const char* kUpdateRead = "UPDATE RICH_INBOX SET READ = ? WHERE NOTIF_ID = ? AND TRACKING_ID = ?";
constexpr const char* kInsert =
    "INSERT INTO RICH_INBOX (subject, content, label, url, notif_id, phash, read, created,         end, card_url, "
    "background_color, foreground_color, metadata, tracking_id) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?)";
constexpr const char* kSelectRead = "SELECT READ FROM RICH_INBOX WHERE NOTIF_ID = ? AND TRACKING_ID = ?";
constexpr const char* kInsertTrash = "INSERT OR IGNORE INTO RICH_TRASH (NOTIF_ID, TRACKING_ID) VALUES (?,?)";
constexpr const char* kSelectList =
    "SELECT ID , SUBJECT , CONTENT , LABEL , URL , NOTIF_ID , PHASH , READ , CREATED , END ,        CARD_URL "
    ",BACKGROUND_COLOR ,FOREGROUND_COLOR , METADATA FROM RICH_INBOX WHERE TRACKING_ID = ? ORDER BY CREATED DESC, "
    "NOTIF_ID DESC";
constexpr const char* kSelectUnread = "SELECT READ,END,NOTIF_ID FROM RICH_INBOX WHERE TRACKING_ID = ?";
constexpr const char* kSelectState =
    "SELECT ID , SUBJECT , CONTENT , LABEL , URL , NOTIF_ID , PHASH , READ , CREATED , END ,            CARD_URL "
    ",BACKGROUND_COLOR ,FOREGROUND_COLOR , METADATA FROM RICH_INBOX WHERE TRACKING_ID = ? ORDER BY NOTIF_ID DESC";
constexpr const char* kSelectImage = "SELECT CARD_IMAGE FROM RICH_INBOX WHERE NOTIF_ID = ? AND TRACKING_ID = ?";
constexpr const char* kUpdateImage = "UPDATE RICH_INBOX SET CARD_IMAGE = ? WHERE NOTIF_ID = ? AND TRACKING_ID = ?";

/// The columns of the two long statements.
struct MessageColumn {
    enum : int {
        rowId,
        subject,
        content,
        label,
        url,
        notificationId,
        phash,
        read,
        created,
        end,
        cardUrl,
        backgroundColor,
        foregroundColor,
        metadata
    };
};

VLInboxRecord recordFromRow(const VLInboxStatement& row) {
    using Column = MessageColumn;
    return {.notificationId = row.id(Column::notificationId),
            .subject = row.text(Column::subject),
            .content = row.text(Column::content),
            .label = row.text(Column::label),
            .url = row.text(Column::url),
            .phash = row.text(Column::phash),
            .read = row.integer(Column::read),
            .created = row.number(Column::created),
            .end = row.number(Column::end),
            .cardUrl = row.text(Column::cardUrl),
            .backgroundColor = row.text(Column::backgroundColor),
            .foregroundColor = row.text(Column::foregroundColor),
            .metadata = row.text(Column::metadata)};
}

}  // namespace

/// One operation's connection. Its end closes it, and replaces the file when it was found to be damaged.
class VLInboxStore::Operation {
public:
    explicit Operation(VLInboxStore& store)
        : store_(store), connection_(VLInboxDatabaseManager::databaseV2PlusPath()) {}

    ~Operation() {
        connection_.close();
        if (connection_.isCorrupt()) store_.databaseManager_->replaceCorruptDatabase();
    }

    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    VLInboxConnection& connection() { return connection_; }

    /// Runs a statement that gives rows; returns whether all of them were seen.
    template <class Row>
    bool select(const char* sql, const std::string& trackingId, Row row) {
        VLInboxStatement statement(connection_, sql);
        return readAll(statement.bind(trackingId), row);
    }

    template <class Row>
    bool readAll(VLInboxStatement& statement, Row row) {
        if (!statement.isPrepared()) return fail();
        int result = SQLITE_ROW;
        while ((result = statement.step()) == SQLITE_ROW) row(statement);
        return result == SQLITE_DONE || failStep(result);
    }

    /// Runs a statement that gives none, its parameters bound by `bind`.
    template <class Bind>
    bool change(const char* sql, Bind bind) {
        VLInboxStatement statement(connection_, sql);
        if (!statement.isPrepared()) return fail();
        bind(statement);
        const int result = statement.step();
        return result == SQLITE_DONE || failStep(result);
    }

    /// Runs `changes` as one transaction: all of them, or none when one says that it failed.
    template <class Changes>
    bool inTransaction(Changes changes) {
        if (!connection_.execute("BEGIN IMMEDIATE").empty()) return fail();
        if (changes() && (connection_.execute("COMMIT").empty() || fail())) return true;
        connection_.execute("ROLLBACK");
        return false;
    }

    /// What went wrong last; nothing when nothing did.
    const std::optional<NSError>& error() const { return error_; }

private:
    bool fail() {
        logMessage(VLLogLevel::Error, fmt::format("sqlite3_errmsg - {}", connection_.errorMessage()));
        return fail("sqlite3_errcode", connection_.errorCode());
    }

    bool failStep(int result) {
        logMessage(VLLogLevel::Error, fmt::format("sqlite3_errcode - {}", result));
        return fail("sqlite3_step result", result);
    }

    bool fail(const char* key, int result) {
        error_ = VLError::errorWithDomain(VLErrorDomainInbox, 0, connection_.errorMessage(), {{key, result}});
        return false;
    }

    VLInboxStore& store_;
    VLInboxConnection connection_;
    std::optional<NSError> error_;
};

VLInboxStore::VLInboxStore(std::shared_ptr<const VLInboxDatabaseManager> databaseManager,
                           std::weak_ptr<VLInboxService> service)
    : databaseManager_(std::move(databaseManager)), service_(std::move(service)) {}

std::shared_ptr<VLInboxMessage> VLInboxStore::message(VLInboxRecord record) const {
    return std::make_shared<VLInboxMessage>(std::move(record).messageContent(), service_);
}

std::optional<std::vector<VLInboxEntry>> VLInboxStore::stateEntries(const std::string& trackingId) {
    Operation operation(*this);
    std::vector<VLInboxEntry> entries;
    const bool isRead = operation.select(kSelectState, trackingId, [&entries](const VLInboxStatement& row) {
        entries.push_back({row.id(MessageColumn::notificationId), row.integer(MessageColumn::read)});
    });
    return isRead ? std::optional(std::move(entries)) : std::nullopt;
}

std::optional<VLInboxStore::Local> VLInboxStore::local(const std::string& trackingId) {
    Operation operation(*this);
    Local local;
    const bool isRead = operation.select(kSelectLocal, trackingId, [&local](const VLInboxStatement& row) {
        local.entries.push_back({row.id(0), row.integer(1)});
    }) && operation.select(kSelectTrash, trackingId, [&local](const VLInboxStatement& row) {
        local.trash.push_back(row.id(0));
    });
    return isRead ? std::optional(std::move(local)) : std::nullopt;
}

std::optional<std::size_t> VLInboxStore::unreadCount(const std::string& trackingId, double now) {
    Operation operation(*this);
    return unreadCount(operation, trackingId, now);
}

VLInboxStore::List VLInboxStore::list(const std::string& trackingId, double now) {
    Operation operation(*this);
    auto listed = rows(operation, trackingId);
    return {std::move(listed), unreadCount(operation, trackingId, now)};
}

std::shared_ptr<const VLInboxRows> VLInboxStore::rows(Operation& operation, const std::string& trackingId) {
    const auto stamp = keptRows_.isKeeping() ? operation.connection().stamp() : std::nullopt;
    if (auto kept = keptRows_.rows(trackingId, stamp)) return kept;
    auto rows = std::make_shared<VLInboxRows>();
    const bool isRead = operation.select(kSelectList, trackingId, [this, &rows](const VLInboxStatement& row) {
        rows->push_back(message(recordFromRow(row)));
    });
    if (!isRead) return nullptr;
    keptRows_.keep(trackingId, rows, stamp);
    return rows;
}

std::optional<std::size_t> VLInboxStore::unreadCount(Operation& operation, const std::string& trackingId, double now) {
    if (keptRows_.isKeeping()) {
        if (const auto kept = keptRows_.rows(trackingId, operation.connection().stamp())) {
            return vorlane::unreadCount(*kept, now);
        }
    }
    std::unordered_set<std::uint64_t> unread;
    const bool isRead = operation.select(kSelectUnread, trackingId, [&unread, now](const VLInboxStatement& row) {
        if (row.integer(0) == 0 && row.number(1) > now) unread.insert(row.id(2));
    });
    return isRead ? std::optional(unread.size()) : std::nullopt;
}

std::optional<Data> VLInboxStore::cardImage(std::uint64_t notificationId, const std::string& trackingId) {
    Operation operation(*this);
    std::optional<Data> image;
    VLInboxStatement statement(operation.connection(), kSelectImage);
    operation.readAll(statement.bindId(notificationId).bind(trackingId), [&image](const VLInboxStatement& row) {
        // Of a message that is there twice, one row may have it and the other not.
        if (!image) image = row.data(0);
    });
    return image;
}

bool VLInboxStore::insert(VLInboxRecord record, const std::string& trackingId) {
    Operation operation(*this);
    const auto before = keptRows_.isKeeping() ? operation.connection().stamp() : std::nullopt;
    const bool isInserted = operation.change(kInsert, [&record, &trackingId](VLInboxStatement& statement) {
        statement.bind(record.subject).bind(record.content).bind(record.label).bind(record.url);
        statement.bindId(record.notificationId).bind(record.phash).bind(record.read).bind(record.created);
        statement.bind(record.end).bind(record.cardUrl).bind(record.backgroundColor).bind(record.foregroundColor);
        statement.bind(record.metadata).bind(trackingId);
    });
    // SQLite has no date before any other; the kept rows have 0 for it.
    if (isInserted && before && record.created.value_or(0) > 0) {
        keptRows_.add(trackingId, message(std::move(record)), before, operation.connection().stamp());
    }
    return isInserted;
}

std::vector<bool> VLInboxStore::removeRows(const std::vector<std::uint64_t>& notificationIds,
                                           const std::string& trackingId) {
    std::vector<bool> removed;
    if (notificationIds.empty()) return removed;
    Operation operation(*this);
    // Flushed to the disk once for all of them.
    const bool isCommitted = operation.inTransaction([&] {
        for (const auto notificationId : notificationIds) {
            removed.push_back(operation.change(
                kDelete, [&](VLInboxStatement& statement) { statement.bindId(notificationId).bind(trackingId); }));
        }
        return true;
    });
    if (!isCommitted) removed.assign(notificationIds.size(), false);
    return removed;
}

std::vector<bool> VLInboxStore::setReadFlags(const std::vector<VLInboxEntry>& entries, const std::string& trackingId) {
    std::vector<bool> isSet;
    if (entries.empty()) return isSet;
    Operation operation(*this);
    const bool isCommitted = operation.inTransaction([&] {
        for (const auto& entry : entries) {
            isSet.push_back(operation.change(kUpdateRead, [&](VLInboxStatement& statement) {
                statement.bind(entry.read).bindId(entry.notificationId).bind(trackingId);
            }));
        }
        return true;
    });
    if (!isCommitted) isSet.assign(entries.size(), false);
    return isSet;
}

std::optional<NSError> VLInboxStore::setCardImage(const Data& image, std::uint64_t notificationId,
                                                  const std::string& trackingId) {
    Operation operation(*this);
    operation.change(kUpdateImage, [&](VLInboxStatement& statement) {
        statement.bind(image).bindId(notificationId).bind(trackingId);
    });
    return operation.error();
}

VLInboxStore::ReadResult VLInboxStore::markRead(std::uint64_t notificationId, const std::string& trackingId) {
    Operation operation(*this);
    bool wasRead = false;
    {
        VLInboxStatement statement(operation.connection(), kSelectRead);
        operation.readAll(statement.bindId(notificationId).bind(trackingId),
                          [&wasRead](const VLInboxStatement& row) { wasRead = wasRead || row.integer(0) != 0; });
    }
    if (wasRead) return {true, std::nullopt};
    const bool isSet = operation.change(kUpdateRead, [&](VLInboxStatement& statement) {
        statement.bind(std::int64_t{1}).bindId(notificationId).bind(trackingId);
    });
    if (!isSet) {
        logMessage(VLLogLevel::Error,
                   fmt::format("Inbox: encountered error when updating message {} in local DB", notificationId));
    }
    return {false, operation.error()};
}

std::optional<NSError> VLInboxStore::moveToTrash(std::uint64_t notificationId, const std::string& trackingId) {
    Operation operation(*this);
    const auto bind = [&](VLInboxStatement& statement) { statement.bindId(notificationId).bind(trackingId); };
    operation.inTransaction([&] { return operation.change(kDelete, bind) && operation.change(kInsertTrash, bind); });
    return operation.error();
}

}  // namespace vorlane

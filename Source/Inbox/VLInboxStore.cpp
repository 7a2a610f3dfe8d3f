#include "Inbox/VLInboxStore.h"

#include <fmt/format.h>

#include <utility>

#include "Inbox/VLInboxIds.h"
#include "Inbox/VLInboxOperation.h"
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
        RowId,
        Subject,
        Content,
        Label,
        URL,
        NotificationId,
        Phash,
        Read,
        Created,
        End,
        CardURL,
        BackgroundColor,
        ForegroundColor,
        Metadata
    };
};

VLInboxRecord recordFromRow(const VLInboxStatement& row) {
    using Column = MessageColumn;
    return {.notificationId = row.id(Column::NotificationId),
            .subject = row.text(Column::Subject),
            .content = row.text(Column::Content),
            .label = row.text(Column::Label),
            .url = row.text(Column::URL),
            .phash = row.text(Column::Phash),
            .read = row.integer(Column::Read),
            .created = row.number(Column::Created),
            .end = row.number(Column::End),
            .cardUrl = row.text(Column::CardURL),
            .backgroundColor = row.text(Column::BackgroundColor),
            .foregroundColor = row.text(Column::ForegroundColor),
            .metadata = row.text(Column::Metadata)};
}

}  // namespace

VLInboxStore::VLInboxStore(std::shared_ptr<const VLInboxDatabaseManager> databaseManager,
                           std::weak_ptr<VLInboxService> service)
    : databaseManager_(std::move(databaseManager)), service_(std::move(service)) {}

std::shared_ptr<VLInboxMessage> VLInboxStore::message(VLInboxRecord record) const {
    return std::make_shared<VLInboxMessage>(std::move(record).messageContent(), service_);
}

template <class Work>
std::invoke_result_t<Work, VLInboxOperation&> VLInboxStore::perform(Work work) {
    std::optional<VLInboxOperation> operation(std::in_place, databaseManager_->openDatabase());
    auto result = work(*operation);
    if (!operation->connection().isCorrupt()) return result;
    operation.reset();
    if (!databaseManager_->repairDatabase()) return result;
    return work(operation.emplace(databaseManager_->openDatabase()));
}

std::optional<std::vector<VLInboxEntry>> VLInboxStore::stateEntries(const std::string& trackingId) {
    return perform([&trackingId](VLInboxOperation& operation) {
        std::vector<VLInboxEntry> entries;
        const bool isRead = operation.select(kSelectState, trackingId, [&entries](const VLInboxStatement& row) {
            entries.push_back({row.id(MessageColumn::NotificationId), row.integer(MessageColumn::Read)});
        });
        return isRead ? std::optional(std::move(entries)) : std::nullopt;
    });
}

std::optional<VLInboxStore::Local> VLInboxStore::local(const std::string& trackingId) {
    return perform([&trackingId](VLInboxOperation& operation) {
        Local local;
        const bool isRead = operation.select(kSelectLocal, trackingId, [&local](const VLInboxStatement& row) {
            local.entries.push_back({row.id(0), row.integer(1)});
        }) && operation.select(kSelectTrash, trackingId, [&local](const VLInboxStatement& row) {
            local.trash.push_back(row.id(0));
        });
        return isRead ? std::optional(std::move(local)) : std::nullopt;
    });
}

std::optional<std::size_t> VLInboxStore::unreadCount(const std::string& trackingId, double now) {
    return perform([&](VLInboxOperation& operation) { return unreadCount(operation, trackingId, now); });
}

VLInboxStore::List VLInboxStore::list(const std::string& trackingId, double now) {
    return perform([&](VLInboxOperation& operation) {
        auto listed = rows(operation, trackingId);
        return List{std::move(listed), unreadCount(operation, trackingId, now)};
    });
}

std::shared_ptr<const VLInboxRows> VLInboxStore::rows(VLInboxOperation& operation, const std::string& trackingId) {
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

std::optional<std::size_t> VLInboxStore::unreadCount(VLInboxOperation& operation, const std::string& trackingId,
                                                     double now) {
    if (keptRows_.isKeeping()) {
        if (const auto kept = keptRows_.rows(trackingId, operation.connection().stamp())) {
            return vorlane::unreadCount(*kept, now);
        }
    }
    VLInboxIds unread;
    const bool isRead = operation.select(kSelectUnread, trackingId, [&unread, now](const VLInboxStatement& row) {
        if (row.integer(0) == 0 && row.number(1) > now) unread.insert(row.id(2));
    });
    return isRead ? std::optional(unread.size()) : std::nullopt;
}

std::optional<Data> VLInboxStore::cardImage(std::uint64_t notificationId, const std::string& trackingId) {
    return perform([&](VLInboxOperation& operation) {
        std::optional<Data> image;
        VLInboxStatement statement(operation.connection(), kSelectImage);
        operation.readAll(statement.bindId(notificationId).bind(trackingId), [&image](const VLInboxStatement& row) {
            // A message can have two rows, only one of them with the image.
            if (!image) image = row.data(0);
        });
        return image;
    });
}

bool VLInboxStore::insert(const VLInboxRecord& record, const std::string& trackingId) {
    return perform([&](VLInboxOperation& operation) {
        const auto before = keptRows_.isKeeping() ? operation.connection().stamp() : std::nullopt;
        const bool isInserted = operation.change(kInsert, [&record, &trackingId](VLInboxStatement& statement) {
            statement.bind(record.subject).bind(record.content).bind(record.label).bind(record.url);
            statement.bindId(record.notificationId).bind(record.phash).bind(record.read).bind(record.created);
            statement.bind(record.end).bind(record.cardUrl).bind(record.backgroundColor).bind(record.foregroundColor);
            statement.bind(record.metadata).bind(trackingId);
        });
        // SQLite orders NULL before any date; in the kept rows it is 0.
        if (isInserted && before && record.created.value_or(0) > 0) {
            keptRows_.add(trackingId, message(record), before, operation.connection().stamp());
        }
        return isInserted;
    });
}

template <class Element, class Change>
std::vector<bool> VLInboxStore::changeEach(const std::vector<Element>& elements, Change change) {
    if (elements.empty()) return {};
    return perform([&](VLInboxOperation& operation) {
        std::vector<bool> changed;
        // One transaction, so that the file is flushed once for all of them.
        const bool isCommitted = operation.inTransaction([&] {
            for (const auto& element : elements) changed.push_back(change(operation, element));
            return true;
        });
        if (!isCommitted) changed.assign(elements.size(), false);
        return changed;
    });
}

std::vector<bool> VLInboxStore::removeRows(const std::vector<std::uint64_t>& notificationIds,
                                           const std::string& trackingId) {
    return changeEach(notificationIds, [&trackingId](VLInboxOperation& operation, std::uint64_t notificationId) {
        return operation.change(
            kDelete, [&](VLInboxStatement& statement) { statement.bindId(notificationId).bind(trackingId); });
    });
}

std::vector<bool> VLInboxStore::setReadFlags(const std::vector<VLInboxEntry>& entries, const std::string& trackingId) {
    return changeEach(entries, [&trackingId](VLInboxOperation& operation, const VLInboxEntry& entry) {
        return operation.change(kUpdateRead, [&](VLInboxStatement& statement) {
            statement.bind(entry.read).bindId(entry.notificationId).bind(trackingId);
        });
    });
}

std::optional<NSError> VLInboxStore::setCardImage(const Data& image, std::uint64_t notificationId,
                                                  const std::string& trackingId) {
    return perform([&](VLInboxOperation& operation) {
        operation.change(kUpdateImage, [&](VLInboxStatement& statement) {
            statement.bind(image).bindId(notificationId).bind(trackingId);
        });
        return operation.error();
    });
}

VLInboxStore::ReadResult VLInboxStore::markRead(std::uint64_t notificationId, const std::string& trackingId) {
    auto result = perform([&](VLInboxOperation& operation) {
        const bool wasRead = isRead(operation, notificationId, trackingId);
        if (!wasRead) {
            operation.change(kUpdateRead, [&](VLInboxStatement& statement) {
                statement.bind(std::int64_t{1}).bindId(notificationId).bind(trackingId);
            });
        }
        return ReadResult{wasRead, wasRead ? std::nullopt : operation.error()};
    });
    if (result.error) {
        logMessage(VLLogLevel::Error,
                   fmt::format("Inbox: encountered error when updating message {} in local DB", notificationId));
    }
    return result;
}

bool VLInboxStore::isRead(VLInboxOperation& operation, std::uint64_t notificationId, const std::string& trackingId) {
    bool isRead = false;
    VLInboxStatement statement(operation.connection(), kSelectRead);
    operation.readAll(statement.bindId(notificationId).bind(trackingId),
                      [&isRead](const VLInboxStatement& row) { isRead = isRead || row.integer(0) != 0; });
    return isRead;
}

std::optional<NSError> VLInboxStore::moveToTrash(std::uint64_t notificationId, const std::string& trackingId) {
    return perform([&](VLInboxOperation& operation) {
        const auto bind = [&](VLInboxStatement& statement) { statement.bindId(notificationId).bind(trackingId); };
        operation.inTransaction(
            [&] { return operation.change(kDelete, bind) && operation.change(kInsertTrash, bind); });
        return operation.error();
    });
}

}  // namespace vorlane

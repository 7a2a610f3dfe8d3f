#include "Simulator/Service/Store/MailboxStore.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include "Simulator/Service/Http/ServiceResponse.h"
#include "Simulator/Service/Store/CardImage.h"
#include "Simulator/Service/Store/MailboxMessage.h"
#include "Simulator/Service/Store/SQLiteDatabase.h"
#include "Simulator/Service/Store/SQLiteStatement.h"

namespace vorlane::service {
namespace {

constexpr const char* kColumns =
    "SELECT mailboxes.app_key AS appKey, tracking_id AS trackingId, id, subject, html, label, link, phash, "
    "background_color AS backgroundColor, foreground_color AS foregroundColor, card_url AS cardUrl, image, metadata, "
    "created, expires AS \"end\", is_read AS read, is_deleted AS deleted "
    "FROM mailboxes JOIN messages ON id = message";
constexpr const char* kMailboxFilter =
    " WHERE (?1 IS NULL OR mailboxes.app_key = ?1) AND (?2 IS NULL OR tracking_id = ?2)";

/// An id as SQLite stores it: the signed integer with the same bits.
std::optional<std::int64_t> stored(const std::optional<std::uint64_t>& id) {
    return id ? std::optional(static_cast<std::int64_t>(*id)) : std::nullopt;
}

void restoreId(Dictionary& row) {
    auto& id = row.at("id");
    id = static_cast<std::uint64_t>(id.get<std::int64_t>());
}

std::optional<std::string> metadataText(const MailboxMessage& message) {
    return message.metadata ? std::optional(jsonText(Value(*message.metadata))) : std::nullopt;
}

}  // namespace

std::vector<MailboxStore::Entry> MailboxStore::entries(const std::string& appKey, const std::string& trackingId) {
    const std::lock_guard lock(mutex_);
    // Ids above the signed range are stored as negative integers and so come last, as in an app's database. The order
    // matters when the two compare their states.
    SQLiteStatement statement(database_,
                              "SELECT message, is_read FROM mailboxes WHERE app_key = ?1 AND tracking_id = ?2 "
                              "AND NOT is_deleted ORDER BY message DESC");
    statement.bind(appKey, trackingId);
    std::vector<Entry> entries;
    while (statement.step())
        entries.push_back({static_cast<std::uint64_t>(statement.integer(0)), statement.integer(1) != 0});
    return entries;
}

std::optional<Dictionary> MailboxStore::message(const std::string& appKey, const std::string& trackingId,
                                                std::uint64_t id) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_, std::string(kColumns) +
                                             " WHERE mailboxes.app_key = ?1 AND tracking_id = ?2 AND message = ?3 "
                                             "AND NOT is_deleted");
    if (!statement.bind(appKey, trackingId, stored(id)).step()) return std::nullopt;
    auto row = statement.row();
    restoreId(row);
    return row;
}

bool MailboxStore::change(const std::string& appKey, const std::string& trackingId, std::uint64_t id,
                          const Change& change) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement(database_,
                    "UPDATE mailboxes SET is_read = is_read OR ?4, is_deleted = is_deleted OR ?5 "
                    "WHERE app_key = ?1 AND tracking_id = ?2 AND message = ?3")
        .bind(appKey, trackingId, stored(id), std::optional<std::int64_t>(change.isRead),
              std::optional<std::int64_t>(change.isDeleted))
        .run();
    return changedRows() > 0;
}

std::optional<MailboxStore::Sent> MailboxStore::send(const MailboxMessage& message,
                                                     const std::optional<std::string>& trackingId) {
    const std::lock_guard lock(mutex_);
    std::optional<Sent> sent;
    database_.inTransaction([&] {
        const auto id = takeId(message.id);
        if (!id) return;
        sent = Sent{*id, message.phash.value_or(fmt::format("message-{}", *id)), 0};
        insertMessage(message, *sent);
        deliver(message.appKey, trackingId, *sent);
    });
    return sent;
}

/// An id is never assigned twice, not even after its message was removed: an app remembers the ids that it deleted.
std::optional<std::uint64_t> MailboxStore::takeId(const std::optional<std::uint64_t>& wanted) {
    SQLiteStatement(database_, "INSERT OR IGNORE INTO message_ids (id) VALUES (?1)").bind(stored(wanted)).run();
    if (changedRows() == 0) return std::nullopt;
    return static_cast<std::uint64_t>(sqlite3_last_insert_rowid(database_.handle()));
}

void MailboxStore::insertMessage(const MailboxMessage& message, const Sent& sent) {
    const auto& image = message.image;
    if (image) {
        SQLiteStatement(database_,
                        "INSERT OR IGNORE INTO card_images (name, content_type, bytes) VALUES (?1, ?2, "
                        "CAST(?3 AS BLOB))")
            .bind(image->name, image->contentType, image->bytes)
            .run();
    }
    SQLiteStatement(database_,
                    "INSERT INTO messages (id, app_key, subject, html, label, link, phash, background_color, "
                    "foreground_color, card_url, image, metadata, created, expires) "
                    "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14)")
        .bind(stored(sent.id), message.appKey, message.subject, message.html, message.label, message.link, sent.phash,
              message.backgroundColor, message.foregroundColor, message.cardUrl,
              image ? std::optional(image->name) : std::nullopt, metadataText(message), message.created, message.end)
        .run();
}

void MailboxStore::deliver(const std::string& appKey, const std::optional<std::string>& trackingId, Sent& sent) {
    const auto* sql = trackingId ? "INSERT INTO mailboxes (app_key, tracking_id, message) VALUES (?2, ?3, ?1)"
                                 : "INSERT INTO mailboxes (app_key, tracking_id, message) "
                                   "SELECT app_key, tracking_id, ?1 FROM users WHERE app_key = ?2";
    SQLiteStatement statement(database_, sql);
    statement.bind(stored(sent.id), appKey);
    if (trackingId) statement.bind(*trackingId);
    statement.run();
    sent.recipients = changedRows();
}

std::optional<CardImage> MailboxStore::image(const std::string& name) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_, "SELECT content_type, bytes FROM card_images WHERE name = ?1");
    if (!statement.bind(name).step()) return std::nullopt;
    return CardImage{name, statement.text(0), statement.text(1)};
}

Array MailboxStore::list(const StoreFilter& filter) {
    const std::lock_guard lock(mutex_);
    auto rows = SQLiteStatement(database_, std::string(kColumns) + kMailboxFilter +
                                               " ORDER BY mailboxes.app_key, tracking_id, message < 0, message")
                    .bind(filter.appKey, filter.trackingId)
                    .rows();
    for (auto& row : rows) restoreId(row.get_ref<Dictionary&>());
    return rows;
}

std::size_t MailboxStore::remove(const StoreFilter& filter, const std::optional<std::uint64_t>& id) {
    const std::lock_guard lock(mutex_);
    std::size_t removed = 0;
    database_.inTransaction([&] {
        SQLiteStatement(database_,
                        std::string("DELETE FROM mailboxes") + kMailboxFilter + " AND (?3 IS NULL OR message = ?3)")
            .bind(filter.appKey, filter.trackingId, stored(id))
            .run();
        removed = changedRows();
        database_.execute(
            "DELETE FROM messages WHERE id NOT IN (SELECT message FROM mailboxes); "
            "DELETE FROM card_images WHERE name NOT IN (SELECT image FROM messages WHERE image IS NOT NULL)");
    });
    return removed;
}

std::size_t MailboxStore::changedRows() const { return static_cast<std::size_t>(sqlite3_changes(database_.handle())); }

}  // namespace vorlane::service

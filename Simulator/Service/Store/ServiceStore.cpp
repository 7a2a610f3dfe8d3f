#include "Simulator/Service/Store/ServiceStore.h"

#include <utility>

#include "Simulator/Service/Http/ServiceResponse.h"
#include "Simulator/Service/Store/DeviceRegistration.h"
#include "Simulator/Service/Store/EventReport.h"
#include "Simulator/Service/Store/SQLiteStatement.h"
#include "Simulator/Service/Store/ServiceSchema.h"
#include "Simulator/Service/Store/SessionReport.h"
#include "Simulator/Service/Store/StoreFilter.h"
#include "Simulator/Service/Store/Tag.h"

namespace vorlane::service {
namespace {

constexpr const char* kDeviceFilter =
    " WHERE (?1 IS NULL OR app_key = ?1) AND (?2 IS NULL OR tracking_id = ?2) ORDER BY ";

std::string jsonText(const Dictionary& dictionary) { return service::jsonText(Value(dictionary)); }

/// Returns `nullopt` for an empty dictionary.
std::optional<std::string> optionalText(const Dictionary& dictionary) {
    return dictionary.empty() ? std::nullopt : std::optional(jsonText(dictionary));
}

}  // namespace

ServiceStore::ServiceStore(const std::string& path)
    : database_(path),
      geo_(mutex_, database_),
      beacons_(mutex_, database_),
      notifications_(mutex_, database_),
      placements_(mutex_, database_),
      mailboxes_(mutex_, database_) {
    database_.execute("PRAGMA busy_timeout = 5000; PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
    prepareSchema(database_);
}

void ServiceStore::noteUser(const std::string& appKey, const std::string& trackingId) {
    const std::lock_guard lock(mutex_);
    insertUser(appKey, trackingId);
}

bool ServiceStore::knowsUser(const std::string& appKey, const std::string& trackingId) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_, "SELECT 1 FROM users WHERE app_key = ?1 AND tracking_id = ?2");
    return statement.bind(appKey, trackingId).step();
}

void ServiceStore::addSession(const SessionReport& session) {
    const std::lock_guard lock(mutex_);
    database_.inTransaction([&] {
        if (session.prevTrackingId) insertUser(session.appKey, *session.prevTrackingId);
        insertUser(session.appKey, session.trackingId);
        insertSession(session);
        moveDevice(session);
    });
}

void ServiceStore::insertSession(const SessionReport& session) {
    SQLiteStatement(database_,
                    "INSERT INTO sessions (kind, time, app_key, tracking_id, device_id, sid, session_length, "
                    "average_session_length, phash, prev_tracking_id, payload) "
                    "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)")
        .bind(session.kind, session.time, session.appKey, session.trackingId, session.deviceId, session.sid,
              session.sessionLength, session.averageSessionLength, session.phash, session.prevTrackingId,
              jsonText(session.payload))
        .run();
}

void ServiceStore::moveDevice(const SessionReport& session) {
    SQLiteStatement(database_,
                    "INSERT INTO devices (app_key, device_id, tracking_id, prev_tracking_id, time, platform, device) "
                    "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7) ON CONFLICT DO UPDATE SET tracking_id = excluded.tracking_id, "
                    "prev_tracking_id = coalesce(excluded.prev_tracking_id, prev_tracking_id), time = excluded.time, "
                    "platform = coalesce(excluded.platform, platform), device = coalesce(excluded.device, device)")
        .bind(session.appKey, session.deviceId, session.trackingId, session.prevTrackingId, session.time,
              session.platform, optionalText(session.device))
        .run();
}

void ServiceStore::addEvent(const EventReport& event) {
    const std::lock_guard lock(mutex_);
    database_.inTransaction([&] {
        insertUser(event.appKey, event.trackingId);
        SQLiteStatement(database_,
                        "INSERT INTO events (time, app_key, tracking_id, device_id, sid, type, label, phash, payload) "
                        "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)")
            .bind(event.time, event.appKey, event.trackingId, event.deviceId, event.sid, event.type,
                  service::jsonText(event.label), event.phash, jsonText(event.payload))
            .run();
    });
}

void ServiceStore::registerDevice(const DeviceRegistration& registration) {
    const auto settings =
        registration.notificationSettings ? std::optional(jsonText(*registration.notificationSettings)) : std::nullopt;
    const std::lock_guard lock(mutex_);
    database_.inTransaction([&] {
        insertUser(registration.appKey, registration.trackingId);
        SQLiteStatement(database_,
                        "INSERT INTO devices (app_key, device_id, tracking_id, time, platform, token, registered, "
                        "notification_settings) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8) ON CONFLICT DO UPDATE SET "
                        "tracking_id = excluded.tracking_id, time = excluded.time, "
                        "platform = coalesce(excluded.platform, platform), token = excluded.token, "
                        "registered = excluded.registered, "
                        "notification_settings = coalesce(excluded.notification_settings, notification_settings)")
            .bind(registration.appKey, registration.deviceId, registration.trackingId, registration.time,
                  registration.platform, registration.token, std::optional<std::int64_t>(registration.isRegistered),
                  settings)
            .run();
    });
}

void ServiceStore::setTags(const std::string& appKey, const std::string& trackingId, const std::vector<Tag>& tags) {
    const std::lock_guard lock(mutex_);
    database_.inTransaction([&] {
        insertUser(appKey, trackingId);
        for (const auto& tag : tags) setTag(appKey, trackingId, tag);
    });
}

void ServiceStore::setTag(const std::string& appKey, const std::string& trackingId, const Tag& tag) {
    if (tag.value) {
        SQLiteStatement(database_,
                        "INSERT OR REPLACE INTO tags (app_key, tracking_id, name, type, value) "
                        "VALUES (?1, ?2, ?3, ?4, ?5)")
            .bind(appKey, trackingId, tag.name, tag.type, *tag.value)
            .run();
    } else {
        SQLiteStatement(database_, "DELETE FROM tags WHERE app_key = ?1 AND tracking_id = ?2 AND name = ?3")
            .bind(appKey, trackingId, tag.name)
            .run();
    }
}

std::optional<Tag> ServiceStore::tag(const std::string& appKey, const std::string& trackingId,
                                     const std::string& name) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_,
                              "SELECT type, value FROM tags WHERE app_key = ?1 AND tracking_id = ?2 AND name = ?3");
    if (!statement.bind(appKey, trackingId, name).step()) return std::nullopt;
    return Tag{name, statement.text(0), statement.text(1)};
}

void ServiceStore::deleteTags(const std::string& appKey, const std::string& trackingId) {
    const std::lock_guard lock(mutex_);
    database_.inTransaction([&] {
        insertUser(appKey, trackingId);
        SQLiteStatement(database_, "DELETE FROM tags WHERE app_key = ?1 AND tracking_id = ?2")
            .bind(appKey, trackingId)
            .run();
    });
}

std::optional<Dictionary> ServiceStore::configuration(const std::string& appKey) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_, "SELECT document FROM configurations WHERE app_key = ?1");
    if (!statement.bind(appKey).step()) return std::nullopt;
    auto row = statement.row();
    return std::move(row["document"].get_ref<Dictionary&>());
}

void ServiceStore::setConfiguration(const std::string& appKey, const Dictionary& document) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement(database_, "INSERT OR REPLACE INTO configurations (app_key, document) VALUES (?1, ?2)")
        .bind(appKey, jsonText(document))
        .run();
}

void ServiceStore::removeConfiguration(const std::string& appKey) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement(database_, "DELETE FROM configurations WHERE app_key = ?1").bind(appKey).run();
}

Array ServiceStore::sessions(const StoreFilter& filter) {
    return list(std::string("SELECT number, time, kind, app_key AS appKey, tracking_id AS trackingId, "
                            "device_id AS deviceId, sid, session_length AS sessionLength, "
                            "average_session_length AS averageSessionLength, phash, "
                            "prev_tracking_id AS prevTrackingId, payload FROM sessions") +
                    kDeviceFilter + "number",
                filter);
}

Array ServiceStore::events(const StoreFilter& filter) {
    return list(std::string("SELECT number, time, app_key AS appKey, tracking_id AS trackingId, "
                            "device_id AS deviceId, sid, type, label, phash, payload FROM events") +
                    kDeviceFilter + "number",
                filter);
}

Array ServiceStore::tags(const StoreFilter& filter) {
    auto rows = list(std::string("SELECT app_key AS appKey, tracking_id AS trackingId, name, type, value FROM tags") +
                         kDeviceFilter + "app_key, tracking_id, name",
                     filter);
    for (auto& row : rows) {
        const Tag tag{row["name"].get<std::string>(), row["type"].get<std::string>(), row["value"].get<std::string>()};
        row["value"] = tag.readValue();
    }
    return rows;
}

Array ServiceStore::devices(const StoreFilter& filter) {
    return list(std::string("SELECT app_key AS appKey, device_id AS deviceId, tracking_id AS trackingId, "
                            "prev_tracking_id AS prevTrackingId, time, platform, device, token, registered, "
                            "notification_settings AS notificationSettings FROM devices") +
                    kDeviceFilter + "app_key, device_id",
                filter);
}

void ServiceStore::clear() {
    const std::lock_guard lock(mutex_);
    database_.inTransaction([this] {
        database_.execute(
            "DELETE FROM users; DELETE FROM devices; DELETE FROM sessions; DELETE FROM events; DELETE FROM tags; "
            "DELETE FROM configurations; DELETE FROM placements; DELETE FROM regions; DELETE FROM geo_contents; "
            "DELETE FROM beacon_contents; DELETE FROM beacon_sessions; DELETE FROM beacon_summaries; "
            "DELETE FROM campaigns; DELETE FROM splits; DELETE FROM cancellations; DELETE FROM pushes; "
            "DELETE FROM mailboxes; DELETE FROM messages; DELETE FROM message_ids; DELETE FROM card_images; "
            "DELETE FROM sqlite_sequence");
    });
}

void ServiceStore::insertUser(const std::string& appKey, const std::string& trackingId) {
    SQLiteStatement(database_, "INSERT OR IGNORE INTO users (app_key, tracking_id) VALUES (?1, ?2)")
        .bind(appKey, trackingId)
        .run();
}

Array ServiceStore::list(const std::string& sql, const StoreFilter& filter) {
    const std::lock_guard lock(mutex_);
    return SQLiteStatement(database_, sql).bind(filter.appKey, filter.trackingId).rows();
}

}  // namespace vorlane::service

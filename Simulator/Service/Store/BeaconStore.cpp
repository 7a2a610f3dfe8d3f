#include "Simulator/Service/Store/BeaconStore.h"

#include <cstdint>

#include "Simulator/Service/Endpoints/BeaconPattern.h"
#include "Simulator/Service/Http/ServiceResponse.h"
#include "Simulator/Service/Store/BeaconSessionReport.h"
#include "Simulator/Service/Store/BeaconSummary.h"
#include "Simulator/Service/Store/SQLiteDatabase.h"
#include "Simulator/Service/Store/SQLiteStatement.h"
#include "Simulator/Service/Store/StoreFilter.h"

namespace vorlane::service {
namespace {

using Milliseconds = std::optional<std::int64_t>;

constexpr const char* kBeaconFilter =
    " WHERE (?1 IS NULL OR app_key = ?1) AND (?2 IS NULL OR tracking_id = ?2) ORDER BY number";

}  // namespace

std::optional<LocalMessage> BeaconStore::content(const std::string& appKey, const BeaconPattern& beacon) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_,
                              "SELECT message FROM beacon_contents WHERE app_key = ?1 AND uuid IN (?2, '*') "
                              "AND major IN (?3, '*') AND minor IN (?4, '*') "
                              "ORDER BY uuid = '*', major = '*', minor = '*' LIMIT 1");
    if (!statement.bind(appKey, beacon.uuid, beacon.major, beacon.minor).step()) return std::nullopt;
    return LocalMessage::fromPayload(statement.row().at("message").get_ref<const Dictionary&>());
}

void BeaconStore::setContent(const std::string& appKey, const BeaconPattern& pattern, const LocalMessage& message) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement(database_,
                    "INSERT OR REPLACE INTO beacon_contents (app_key, uuid, major, minor, message) "
                    "VALUES (?1, ?2, ?3, ?4, ?5)")
        .bind(appKey, pattern.uuid, pattern.major, pattern.minor, jsonText(Value(message.asDictionary())))
        .run();
}

bool BeaconStore::removeContent(const std::string& appKey, const BeaconPattern& pattern) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_,
                              "DELETE FROM beacon_contents WHERE app_key = ?1 AND uuid = ?2 AND major = ?3 "
                              "AND minor = ?4 RETURNING uuid");
    return !statement.bind(appKey, pattern.uuid, pattern.major, pattern.minor).rows().empty();
}

void BeaconStore::removeAllContent(const std::string& appKey) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement(database_, "DELETE FROM beacon_contents WHERE app_key = ?1").bind(appKey).run();
}

Array BeaconStore::allContent(const std::string& appKey) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_,
                              "SELECT uuid, major, minor, message FROM beacon_contents WHERE app_key = ?1 "
                              "ORDER BY uuid, major, minor");
    return statement.bind(appKey).rows();
}

void BeaconStore::addSession(const BeaconSessionReport& report) {
    const auto start = report.isEnd ? Milliseconds() : Milliseconds(report.timestamp);
    const auto end = report.isEnd ? Milliseconds(report.timestamp) : Milliseconds();
    const std::lock_guard lock(mutex_);
    SQLiteStatement(database_,
                    "INSERT INTO beacon_sessions (app_key, tracking_id, session_id, uuid, major, minor, start_time, "
                    "end_time) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8) ON CONFLICT DO UPDATE SET "
                    "start_time = coalesce(excluded.start_time, start_time), "
                    "end_time = coalesce(excluded.end_time, end_time)")
        .bind(report.appKey, report.trackingId, report.sessionId, report.region.uuid, report.region.major,
              report.region.minor, start, end)
        .run();
}

void BeaconStore::addSummary(const BeaconSummary& summary) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement(database_,
                    "INSERT INTO beacon_summaries (time, app_key, tracking_id, session_id, timestamp, beacons) "
                    "VALUES (?1, ?2, ?3, ?4, ?5, ?6)")
        .bind(summary.time, summary.appKey, summary.trackingId, summary.sessionId, Milliseconds(summary.timestamp),
              jsonText(Value(summary.beacons)))
        .run();
}

Array BeaconStore::sessions(const StoreFilter& filter) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_,
                              std::string("SELECT number, app_key AS appKey, tracking_id AS trackingId, "
                                          "session_id AS sessionId, uuid, major, minor, start_time AS startTime, "
                                          "end_time AS endTime FROM beacon_sessions") +
                                  kBeaconFilter);
    return statement.bind(filter.appKey, filter.trackingId).rows();
}

Array BeaconStore::summaries(const StoreFilter& filter) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_,
                              std::string("SELECT number, time, app_key AS appKey, tracking_id AS trackingId, "
                                          "session_id AS sessionId, timestamp, beacons FROM beacon_summaries") +
                                  kBeaconFilter);
    return statement.bind(filter.appKey, filter.trackingId).rows();
}

}  // namespace vorlane::service

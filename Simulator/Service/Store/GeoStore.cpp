#include "Simulator/Service/Store/GeoStore.h"

#include "Simulator/Service/Http/ServiceResponse.h"
#include "Simulator/Service/Store/SQLiteDatabase.h"
#include "Simulator/Service/Store/SQLiteStatement.h"

namespace vorlane::service {

std::vector<Region> GeoStore::regions(const std::string& appKey) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_, "SELECT document FROM regions WHERE app_key = ?1 ORDER BY number");
    statement.bind(appKey);
    std::vector<Region> regions;
    while (statement.step())
        regions.push_back(Region::fromPayload(statement.row().at("document").get_ref<const Dictionary&>()));
    return regions;
}

void GeoStore::setRegions(const std::string& appKey, const std::vector<Region>& regions) {
    const std::lock_guard lock(mutex_);
    database_.inTransaction([&] {
        SQLiteStatement(database_, "DELETE FROM regions WHERE app_key = ?1").bind(appKey).run();
        for (const auto& region : regions) insertRegion(appKey, region);
    });
}

void GeoStore::setRegion(const std::string& appKey, const Region& region) {
    const std::lock_guard lock(mutex_);
    insertRegion(appKey, region);
}

bool GeoStore::removeRegion(const std::string& appKey, const std::string& id) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_, "DELETE FROM regions WHERE app_key = ?1 AND id = ?2 RETURNING id");
    return !statement.bind(appKey, id).rows().empty();
}

std::optional<LocalMessage> GeoStore::content(const std::string& appKey, const std::string& segmentId,
                                              const std::string& transition) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(
        database_, "SELECT message FROM geo_contents WHERE app_key = ?1 AND segment_id = ?2 AND transition = ?3");
    if (!statement.bind(appKey, segmentId, transition).step()) return std::nullopt;
    return LocalMessage::fromPayload(statement.row().at("message").get_ref<const Dictionary&>());
}

void GeoStore::setContent(const std::string& appKey, const std::string& segmentId, const std::string& transition,
                          const LocalMessage& message) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement(database_,
                    "INSERT OR REPLACE INTO geo_contents (app_key, segment_id, transition, message) "
                    "VALUES (?1, ?2, ?3, ?4)")
        .bind(appKey, segmentId, transition, jsonText(Value(message.asDictionary())))
        .run();
}

bool GeoStore::removeContent(const std::string& appKey, const std::string& segmentId, const std::string& transition) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_,
                              "DELETE FROM geo_contents WHERE app_key = ?1 AND segment_id = ?2 AND transition = ?3 "
                              "RETURNING segment_id");
    return !statement.bind(appKey, segmentId, transition).rows().empty();
}

void GeoStore::removeAllContent(const std::string& appKey) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement(database_, "DELETE FROM geo_contents WHERE app_key = ?1").bind(appKey).run();
}

Array GeoStore::allContent(const std::string& appKey) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_,
                              "SELECT segment_id AS segmentId, transition, message FROM geo_contents "
                              "WHERE app_key = ?1 ORDER BY segment_id, transition");
    return statement.bind(appKey).rows();
}

void GeoStore::insertRegion(const std::string& appKey, const Region& region) {
    SQLiteStatement(database_,
                    "INSERT INTO regions (app_key, id, document) VALUES (?1, ?2, ?3) "
                    "ON CONFLICT (app_key, id) DO UPDATE SET document = excluded.document")
        .bind(appKey, region.id, jsonText(Value(region.document)))
        .run();
}

}  // namespace vorlane::service

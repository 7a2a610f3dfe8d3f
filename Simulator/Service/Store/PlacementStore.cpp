#include "Simulator/Service/Store/PlacementStore.h"

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Http/ServiceResponse.h"
#include "Simulator/Service/Store/Placement.h"
#include "Simulator/Service/Store/SQLiteDatabase.h"
#include "Simulator/Service/Store/SQLiteStatement.h"

namespace vorlane::service {
namespace {

Placement placementOf(const Dictionary& row) {
    const auto* metadata = dictionaryForKey(row, "metadata");
    return {row.at("name").get<std::string>(), stringForKey(row, "html"), metadata ? *metadata : Dictionary(),
            stringForKey(row, "phash")};
}

}  // namespace

std::optional<Placement> PlacementStore::placement(const std::string& appKey, const std::string& name) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_,
                              "SELECT name, html, metadata, phash FROM placements WHERE app_key = ?1 AND name = ?2");
    return statement.bind(appKey, name).step() ? std::optional(placementOf(statement.row())) : std::nullopt;
}

std::vector<Placement> PlacementStore::placements(const std::string& appKey) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_,
                              "SELECT name, html, metadata, phash FROM placements WHERE app_key = ?1 ORDER BY name");
    statement.bind(appKey);
    std::vector<Placement> placements;
    while (statement.step()) placements.push_back(placementOf(statement.row()));
    return placements;
}

void PlacementStore::setPlacement(const std::string& appKey, const Placement& placement) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement(database_,
                    "INSERT OR REPLACE INTO placements (app_key, name, html, metadata, phash) "
                    "VALUES (?1, ?2, ?3, ?4, ?5)")
        .bind(appKey, placement.name, placement.html, jsonText(Value(placement.metadata)), placement.phash)
        .run();
}

void PlacementStore::removePlacements(const std::string& appKey) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement(database_, "DELETE FROM placements WHERE app_key = ?1").bind(appKey).run();
}

}  // namespace vorlane::service

#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace vorlane::service {

class SQLiteDatabase;
struct Placement;

/// The content that operators set for the placements of apps. A part of ServiceStore, whose database and mutex it
/// shares. Any thread. Every operation is atomic and throws ServiceError if the database fails.
class PlacementStore {
public:
    /// Both must outlive the store.
    PlacementStore(std::mutex& mutex, SQLiteDatabase& database) : mutex_(mutex), database_(database) {}

    /// Returns `nullopt` if the app has no placement of its own; a placement without a page if it was removed.
    std::optional<Placement> placement(const std::string& appKey, const std::string& name);
    /// The placements of the app's own, by name.
    std::vector<Placement> placements(const std::string& appKey);
    void setPlacement(const std::string& appKey, const Placement& placement);
    void removePlacements(const std::string& appKey);

private:
    std::mutex& mutex_;
    // Guarded by mutex_.
    SQLiteDatabase& database_;
};

}  // namespace vorlane::service

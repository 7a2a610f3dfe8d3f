#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Public/VLValue.h"
#include "Simulator/Service/Store/LocalMessage.h"
#include "Simulator/Service/Store/Region.h"

namespace vorlane::service {

class SQLiteDatabase;

/// The geofences of apps, and their content. A part of ServiceStore, whose database and mutex it shares. Any thread.
/// Every operation is atomic and throws ServiceError if the database fails.
class GeoStore {
public:
    /// Both must outlive the store.
    GeoStore(std::mutex& mutex, SQLiteDatabase& database) : mutex_(mutex), database_(database) {}

    /// The regions of the app, in the order in which they were set.
    std::vector<Region> regions(const std::string& appKey);
    /// Replaces all regions of the app.
    void setRegions(const std::string& appKey, const std::vector<Region>& regions);
    /// Replaces the region with its identifier, or appends it.
    void setRegion(const std::string& appKey, const Region& region);
    /// Returns whether the region existed.
    bool removeRegion(const std::string& appKey, const std::string& id);

    /// Returns the content for entering or leaving a segment; `transition` is "enter" or "exit".
    std::optional<LocalMessage> content(const std::string& appKey, const std::string& segmentId,
                                        const std::string& transition);
    void setContent(const std::string& appKey, const std::string& segmentId, const std::string& transition,
                    const LocalMessage& message);
    /// Returns whether there was content.
    bool removeContent(const std::string& appKey, const std::string& segmentId, const std::string& transition);
    void removeAllContent(const std::string& appKey);
    /// All content of the app, by segment and transition: objects with "segmentId", "transition" and "message".
    Array allContent(const std::string& appKey);

private:
    void insertRegion(const std::string& appKey, const Region& region);

    std::mutex& mutex_;
    // Guarded by mutex_.
    SQLiteDatabase& database_;
};

}  // namespace vorlane::service

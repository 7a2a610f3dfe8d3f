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

/// The geofences of apps, and what is shown on entering and leaving them. A part of the ServiceStore, whose database
/// and mutex it shares. Any thread; every operation is whole or not at all, and throws ServiceError when the database
/// fails.
class GeoStore {
public:
    /// Both have to outlive it.
    GeoStore(std::mutex& mutex, SQLiteDatabase& database) : mutex_(mutex), database_(database) {}

    /// The app's, in the order in which they were set.
    std::vector<Region> regions(const std::string& appKey);
    /// In the place of all that the app has.
    void setRegions(const std::string& appKey, const std::vector<Region>& regions);
    /// In the place of the one with its identifier, or behind the others.
    void setRegion(const std::string& appKey, const Region& region);
    /// Whether there was one.
    bool removeRegion(const std::string& appKey, const std::string& id);

    /// What is shown to who enters or leaves a segment; `transition` is "enter" or "exit".
    std::optional<LocalMessage> content(const std::string& appKey, const std::string& segmentId,
                                        const std::string& transition);
    void setContent(const std::string& appKey, const std::string& segmentId, const std::string& transition,
                    const LocalMessage& message);
    /// Whether there was any.
    bool removeContent(const std::string& appKey, const std::string& segmentId, const std::string& transition);
    void removeAllContent(const std::string& appKey);
    /// The app's, by segment and transition: objects with "segmentId", "transition" and "message".
    Array allContent(const std::string& appKey);

private:
    void insertRegion(const std::string& appKey, const Region& region);

    std::mutex& mutex_;
    // Guarded by mutex_.
    SQLiteDatabase& database_;
};

}  // namespace vorlane::service

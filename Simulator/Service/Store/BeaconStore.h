#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "Public/VLValue.h"
#include "Simulator/Service/Store/LocalMessage.h"

namespace vorlane::service {

class SQLiteDatabase;
struct BeaconPattern;
struct BeaconSessionReport;
struct BeaconSummary;
struct StoreFilter;

/// What is shown near the beacons of apps, and what phones reported of them. A part of the ServiceStore, whose database
/// and mutex it shares. Any thread; every operation is whole or not at all, and throws ServiceError when the database
/// fails.
class BeaconStore {
public:
    /// Both have to outlive it.
    BeaconStore(std::mutex& mutex, SQLiteDatabase& database) : mutex_(mutex), database_(database) {}

    /// What is shown near a beacon. Of several patterns that mean it, the one with the UUID counts most, then the one
    /// with the major, then the one with the minor.
    std::optional<LocalMessage> content(const std::string& appKey, const BeaconPattern& beacon);
    void setContent(const std::string& appKey, const BeaconPattern& pattern, const LocalMessage& message);
    /// Whether there was any of just this pattern.
    bool removeContent(const std::string& appKey, const BeaconPattern& pattern);
    void removeAllContent(const std::string& appKey);
    /// The app's, by pattern: objects with "uuid", "major", "minor" and "message".
    Array allContent(const std::string& appKey);

    /// A start makes a session, an end completes it, or makes one whose start is unknown.
    void addSession(const BeaconSessionReport& report);
    void addSummary(const BeaconSummary& summary);

    // Lists of objects, oldest first.
    Array sessions(const StoreFilter& filter);
    Array summaries(const StoreFilter& filter);

private:
    std::mutex& mutex_;
    // Guarded by mutex_.
    SQLiteDatabase& database_;
};

}  // namespace vorlane::service

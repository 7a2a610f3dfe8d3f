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

/// The content for the beacons of apps, and the reports of phones. A part of ServiceStore, whose database and mutex it
/// shares. Any thread. Every operation is atomic and throws ServiceError if the database fails.
class BeaconStore {
public:
    /// Both must outlive the store.
    BeaconStore(std::mutex& mutex, SQLiteDatabase& database) : mutex_(mutex), database_(database) {}

    /// Returns the content for a beacon. Of several matching patterns the most exact applies: first the UUID counts,
    /// then the major, then the minor.
    std::optional<LocalMessage> content(const std::string& appKey, const BeaconPattern& beacon);
    void setContent(const std::string& appKey, const BeaconPattern& pattern, const LocalMessage& message);
    /// Returns whether there was content for exactly this pattern.
    bool removeContent(const std::string& appKey, const BeaconPattern& pattern);
    void removeAllContent(const std::string& appKey);
    /// All content of the app, by pattern: objects with "uuid", "major", "minor" and "message".
    Array allContent(const std::string& appKey);

    /// A start opens a session; an end completes it, or adds a session without a start.
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

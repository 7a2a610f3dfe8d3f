#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Public/VLValue.h"
#include "Simulator/Service/Store/Campaign.h"
#include "Simulator/Service/Store/StoreFilter.h"

namespace vorlane::service {

class SQLiteDatabase;
struct PushReport;
struct SplitReport;

/// Campaigns, the phashes that local notifications received and returned, and composed pushes. A part of ServiceStore,
/// whose database and mutex it shares. Any thread. Every operation is atomic and throws ServiceError if the database
/// fails.
class NotificationStore {
public:
    /// Both must outlive the store.
    NotificationStore(std::mutex& mutex, SQLiteDatabase& database) : mutex_(mutex), database_(database) {}

    std::optional<Campaign> campaign(const std::string& token);
    /// By token.
    std::vector<Campaign> campaigns();
    void setCampaign(const Campaign& campaign);
    /// Returns whether the campaign existed.
    bool removeCampaign(const std::string& token);

    void addSplit(const SplitReport& split);
    /// The number of phashes that the campaign has received.
    std::int64_t phashCount(const std::string& campaignToken);
    /// Stores the cancellation records of an app, and the time at which their phashes were returned.
    void addCancellations(double time, const std::string& appKey, const std::string& trackingId, const Array& records);
    void addPush(const PushReport& push);

    // Lists of objects, oldest first. A split names no app, so it is listed for every app.
    Array splits(const StoreFilter& filter);
    Array cancellations(const StoreFilter& filter);
    Array pushes(const StoreFilter& filter);

private:
    void insertCancellation(double time, const std::string& appKey, const std::string& trackingId,
                            const Dictionary& record);
    Array list(const std::string& sql, const StoreFilter& filter);

    std::mutex& mutex_;
    // Guarded by mutex_.
    SQLiteDatabase& database_;
};

}  // namespace vorlane::service

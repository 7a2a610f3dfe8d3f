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

/// What was asked for a local notification, and what came of it. A plain value.
struct SplitReport {
    double time = 0;
    std::string trackingId;
    std::optional<std::string> campaignToken;
    std::string pushText;
    /// The notification that opened the app last; "" for none.
    std::string openedPhash;
    /// Nothing when the user was left out.
    std::optional<std::string> phash;
    /// The campaign's, or null.
    Value splitId;
};

/// A push that an operator composed. A plain value.
struct PushReport {
    double time = 0;
    std::string appKey;
    std::string trackingId;
    std::string deviceId;
    std::string token;
    std::optional<std::string> phash;
    Dictionary payload;
};

/// Campaigns, the phashes given to local notifications and taken back, and composed pushes. A part of the ServiceStore,
/// whose database and mutex it shares. Any thread; every operation is whole or not at all, and throws ServiceError when
/// the database fails.
class NotificationStore {
public:
    /// Both have to outlive it.
    NotificationStore(std::mutex& mutex, SQLiteDatabase& database) : mutex_(mutex), database_(database) {}

    std::optional<Campaign> campaign(const std::string& token);
    /// By token.
    std::vector<Campaign> campaigns();
    void setCampaign(const Campaign& campaign);
    /// Whether there was one.
    bool removeCampaign(const std::string& token);

    void addSplit(const SplitReport& split);
    /// How many phashes the campaign has been given.
    std::int64_t phashCount(const std::string& campaignToken);
    /// Stores an app's cancellation records, and notes when the phashes in them were taken back.
    void addCancellations(double time, const std::string& appKey, const std::string& trackingId, const Array& records);
    void addPush(const PushReport& push);

    // Lists of objects, oldest first. A split tells no app, so it is listed for each.
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

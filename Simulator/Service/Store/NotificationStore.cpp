#include "Simulator/Service/Store/NotificationStore.h"

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Http/ServiceResponse.h"
#include "Simulator/Service/Store/PushReport.h"
#include "Simulator/Service/Store/SQLiteDatabase.h"
#include "Simulator/Service/Store/SQLiteStatement.h"
#include "Simulator/Service/Store/SplitReport.h"

namespace vorlane::service {
namespace {

Campaign campaignOf(const Dictionary& row) {
    return Campaign::fromPayload(row.at("token").get<std::string>(), row.at("document").get_ref<const Dictionary&>());
}

}  // namespace

std::optional<Campaign> NotificationStore::campaign(const std::string& token) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_, "SELECT token, document FROM campaigns WHERE token = ?1");
    return statement.bind(token).step() ? std::optional(campaignOf(statement.row())) : std::nullopt;
}

std::vector<Campaign> NotificationStore::campaigns() {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_, "SELECT token, document FROM campaigns ORDER BY token");
    std::vector<Campaign> campaigns;
    while (statement.step()) campaigns.push_back(campaignOf(statement.row()));
    return campaigns;
}

void NotificationStore::setCampaign(const Campaign& campaign) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement(database_, "INSERT OR REPLACE INTO campaigns (token, document) VALUES (?1, ?2)")
        .bind(campaign.token, jsonText(Value(campaign.asDictionary())))
        .run();
}

bool NotificationStore::removeCampaign(const std::string& token) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_, "DELETE FROM campaigns WHERE token = ?1 RETURNING token");
    return !statement.bind(token).rows().empty();
}

void NotificationStore::addSplit(const SplitReport& split) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement(database_,
                    "INSERT INTO splits (time, tracking_id, campaign_token, push_text, opened_phash, phash, split_id) "
                    "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)")
        .bind(split.time, split.trackingId, split.campaignToken, split.pushText, split.openedPhash, split.phash,
              jsonText(split.splitId))
        .run();
}

std::int64_t NotificationStore::phashCount(const std::string& campaignToken) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_,
                              "SELECT count(*) AS count FROM splits WHERE campaign_token = ?1 AND phash IS NOT NULL");
    statement.bind(campaignToken).step();
    return integerForKey(statement.row(), "count").value_or(0);
}

void NotificationStore::addCancellations(double time, const std::string& appKey, const std::string& trackingId,
                                         const Array& records) {
    const std::lock_guard lock(mutex_);
    database_.inTransaction([&] {
        for (const auto& record : records)
            insertCancellation(time, appKey, trackingId, record.get_ref<const Dictionary&>());
    });
}

void NotificationStore::insertCancellation(double time, const std::string& appKey, const std::string& trackingId,
                                           const Dictionary& record) {
    SQLiteStatement(database_, "INSERT INTO cancellations (time, app_key, tracking_id, record) VALUES (?1, ?2, ?3, ?4)")
        .bind(time, appKey, trackingId, jsonText(Value(record)))
        .run();
    SQLiteStatement(database_, "UPDATE splits SET cancelled = coalesce(cancelled, ?1) WHERE phash = ?2")
        .bind(time, stringForKey(record, "phash"))
        .run();
}

void NotificationStore::addPush(const PushReport& push) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement(database_,
                    "INSERT INTO pushes (time, app_key, tracking_id, device_id, token, phash, payload) "
                    "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)")
        .bind(push.time, push.appKey, push.trackingId, push.deviceId, push.token, push.phash,
              jsonText(Value(push.payload)))
        .run();
}

Array NotificationStore::splits(const StoreFilter& filter) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_,
                              "SELECT number, time, tracking_id AS trackingId, campaign_token AS campaignToken, "
                              "push_text AS pushText, opened_phash AS openedPhash, phash, split_id AS splitId, "
                              "cancelled FROM splits WHERE ?1 IS NULL OR tracking_id = ?1 ORDER BY number");
    return statement.bind(filter.trackingId).rows();
}

Array NotificationStore::cancellations(const StoreFilter& filter) {
    return list("SELECT number, time, app_key AS appKey, tracking_id AS trackingId, record FROM cancellations", filter);
}

Array NotificationStore::pushes(const StoreFilter& filter) {
    return list(
        "SELECT number, time, app_key AS appKey, tracking_id AS trackingId, device_id AS deviceId, token, phash, "
        "payload FROM pushes",
        filter);
}

Array NotificationStore::list(const std::string& sql, const StoreFilter& filter) {
    const std::lock_guard lock(mutex_);
    SQLiteStatement statement(database_, sql +
                                             " WHERE (?1 IS NULL OR app_key = ?1) AND "
                                             "(?2 IS NULL OR tracking_id = ?2) ORDER BY number");
    return statement.bind(filter.appKey, filter.trackingId).rows();
}

}  // namespace vorlane::service

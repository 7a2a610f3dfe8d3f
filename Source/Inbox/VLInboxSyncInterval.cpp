#include "Inbox/VLInboxSyncInterval.h"

#include <fmt/format.h>

#include <cstdint>
#include <utility>

#include "Categories/NSDate+VLTimestamp.h"
#include "Public/VLConstants.h"
#include "Public/VLLog.h"
#include "Tracking/VLConfigService.h"

namespace vorlane {

namespace {

constexpr const char* kSyncTimeLimitKey = "sync_time_limit_s";
constexpr std::int64_t kDefaultSyncTimeLimit = 30;

}  // namespace

VLInboxSyncInterval::VLInboxSyncInterval(std::shared_ptr<VLConfigService> configService)
    : configService_(std::move(configService)) {}

bool VLInboxSyncInterval::isReturningLocalDatabaseResult(const std::string& trackingId) {
    const auto passed = secondsSinceLastSync(trackingId);
    if (!passed) return false;
    const auto limit =
        configService_->integerForService(VLCONFIGSERVICEINBOX, kSyncTimeLimitKey, kDefaultSyncTimeLimit);
    logMessage(VLLogLevel::Debug, fmt::format("Inbox: last sync occured {} seconds ago, limit set to {}",
                                              static_cast<std::int64_t>(*passed), limit));
    // A negative time means that the clock was set back, so the true time is unknown.
    return *passed >= 0 && *passed < static_cast<double>(limit);
}

void VLInboxSyncInterval::syncEnded(const std::string& trackingId) {
    const double time = vl_now();
    const std::lock_guard lock(mutex_);
    lastSync_ = time;
    lastSyncTrackingId_ = trackingId;
}

std::optional<double> VLInboxSyncInterval::secondsSinceLastSync(const std::string& trackingId) {
    const double time = vl_now();
    const std::lock_guard lock(mutex_);
    if (!lastSync_ || lastSyncTrackingId_ != trackingId) return std::nullopt;
    return time - *lastSync_;
}

}  // namespace vorlane

#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace vorlane {

class VLConfigService;

/// Decides whether a list request needs a synchronisation: not within 30 seconds, or the configured time, after the
/// last one of the same user. Any thread.
class VLInboxSyncInterval {
public:
    explicit VLInboxSyncInterval(std::shared_ptr<VLConfigService> configService);

    /// `isReturningLocalDatabaseResult:` returns whether the last synchronisation is recent enough.
    bool isReturningLocalDatabaseResult(const std::string& trackingId);

    /// Records that a synchronisation has ended, successfully or not.
    void syncEnded(const std::string& trackingId);

private:
    std::optional<double> secondsSinceLastSync(const std::string& trackingId);

    // Fixed at construction.
    const std::shared_ptr<VLConfigService> configService_;

    std::mutex mutex_;
    // Guarded by mutex_. `nullopt` before the first synchronisation.
    std::optional<double> lastSync_;
    std::string lastSyncTrackingId_;
};

}  // namespace vorlane

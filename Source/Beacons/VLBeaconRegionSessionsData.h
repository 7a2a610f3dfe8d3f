#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

/// The identifiers of the open beacon sessions by region, kept in memory and in "VLBeaconRegionSessions.plist" in the
/// documents folder, so that a session can be closed after a restart. Each writer rewrites the file whole; a failure is
/// silent and what is in memory stays. Any thread.
class VLBeaconRegionSessionsData {
public:
    /// Reads the file; a missing or unreadable one means no open session. Writes nothing.
    VLBeaconRegionSessionsData();

    /// `idWithRegionId:`
    std::optional<std::string> idWithRegionId(const std::string& regionId) const;
    /// `setId:withRegionId:`
    void setId(const std::string& sessionId, const std::string& regionId);
    /// `removeRegion:`
    void removeRegion(const std::string& regionId);

    static std::string getFilePath();

private:
    void write() const;

    // Fixed at construction.
    const std::string filePath_;

    mutable std::recursive_mutex mutex_;
    // Guarded by mutex_.
    Dictionary regionSessions_;
};

}  // namespace vorlane

#pragma once

#include <mutex>
#include <optional>
#include <string>

#include "Platform/Internal/PropertyListFile.h"
#include "Public/VLValue.h"

namespace vorlane {

/// The identifiers of the open beacon sessions by region, kept in memory and in "VLBeaconRegionSessions.plist" in the
/// documents folder, so that a session can be closed after a restart. Each setter replaces the file. If that fails, the
/// values stay in memory, and the next change writes them. Any thread.
class VLBeaconRegionSessionsData {
public:
    /// Reads the file. A missing or unreadable file means that no session is open. The contents of an unreadable file
    /// join the sessions opened meanwhile before the first write that succeeds.
    VLBeaconRegionSessionsData();

    /// `idWithRegionId:`
    std::optional<std::string> idWithRegionId(const std::string& regionId) const;
    /// `setId:withRegionId:`
    void setId(const std::string& sessionId, const std::string& regionId);
    /// `removeRegion:`
    void removeRegion(const std::string& regionId);

    static std::string getFilePath();

private:
    void write();

    mutable std::recursive_mutex mutex_;
    // Guarded by mutex_.
    Dictionary regionSessions_;
    PropertyListFile file_;
};

}  // namespace vorlane

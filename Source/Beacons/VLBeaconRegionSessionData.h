#pragma once

#include <memory>
#include <optional>
#include <string>

namespace vorlane {

class CLBeaconRegion;
class VLBeaconRegionSessionsData;

/// The stored identifier of the open session of one region. Any thread.
class VLBeaconRegionSessionData {
public:
    /// `initWithRegion:withRegionSessionsData:`
    VLBeaconRegionSessionData(const std::shared_ptr<CLBeaconRegion>& region,
                              std::shared_ptr<VLBeaconRegionSessionsData> regionSessionsData);

    /// `nullopt` if no session is open.
    std::optional<std::string> id() const;
    void setId(const std::string& sessionId);
    void clear();

    /// Null once the region is gone.
    std::shared_ptr<CLBeaconRegion> region() const { return region_.lock(); }
    /// The region's `vl_getRegionId`.
    const std::string& regionId() const { return regionId_; }

private:
    // Fixed at construction.
    const std::weak_ptr<CLBeaconRegion> region_;
    const std::string regionId_;
    const std::shared_ptr<VLBeaconRegionSessionsData> regionSessionsData_;
};

}  // namespace vorlane

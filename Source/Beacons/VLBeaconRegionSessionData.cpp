#include "Beacons/VLBeaconRegionSessionData.h"

#include <utility>

#include "Beacons/VLBeaconRegionSessionsData.h"
#include "Categories/CLBeaconRegion+VLRegionId.h"

namespace vorlane {

VLBeaconRegionSessionData::VLBeaconRegionSessionData(const std::shared_ptr<CLBeaconRegion>& region,
                                                     std::shared_ptr<VLBeaconRegionSessionsData> regionSessionsData)
    : region_(region), regionId_(vl_getRegionId(*region)), regionSessionsData_(std::move(regionSessionsData)) {}

std::optional<std::string> VLBeaconRegionSessionData::id() const {
    return regionSessionsData_->idWithRegionId(regionId_);
}

void VLBeaconRegionSessionData::setId(const std::string& sessionId) {
    regionSessionsData_->setId(sessionId, regionId_);
}

void VLBeaconRegionSessionData::clear() { regionSessionsData_->removeRegion(regionId_); }

}  // namespace vorlane

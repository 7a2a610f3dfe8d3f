#include "Beacons/VLBeaconRegionSession.h"

#include <fmt/format.h>

#include <utility>

#include "Beacons/VLBeaconData.h"
#include "Beacons/VLBeaconRegionSessionData.h"
#include "Beacons/VLBeaconsConfig.h"
#include "Categories/CLBeacon+VLProximity.h"
#include "Categories/CLBeaconRegion+VLRegionId.h"
#include "Platform/CLBeaconRegion.h"
#include "Platform/CLLocationManager.h"
#include "Public/VLLog.h"

namespace vorlane {

VLBeaconRegionSession::VLBeaconRegionSession(
    std::shared_ptr<CLBeaconRegion> region, std::shared_ptr<CLLocationManager> manager,
    std::shared_ptr<VLBeaconsConfig> config, std::shared_ptr<VLSettings> settings,
    std::shared_ptr<VLBeaconRegionSessionData> regionSessionData, std::shared_ptr<VLBeaconMessage> beaconMessage,
    std::shared_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession,
    std::shared_ptr<VLPayloadBuilder> payloadBuilder)
    : region_(std::move(region)),
      manager_(std::move(manager)),
      config_(std::move(config)),
      settings_(std::move(settings)),
      regionSessionData_(std::move(regionSessionData)),
      beaconMessage_(std::move(beaconMessage)),
      urlBuilder_(std::move(urlBuilder)),
      urlSession_(std::move(urlSession)),
      payloadBuilder_(std::move(payloadBuilder)),
      isMessageType_(vl_findBeaconRegionWithin(*region_, config_->messageBeaconRegions()) != nullptr),
      isDataType_(vl_findBeaconRegionWithin(*region_, config_->dataBeaconRegions()) != nullptr) {}

VLBeaconRegionSession::~VLBeaconRegionSession() = default;

void VLBeaconRegionSession::didEnter() {
    if (isDataType_) beaconData().didEnterRegion();
}

void VLBeaconRegionSession::rangingBeacons(const std::vector<CLBeacon>& beacons,
                                           const VLBeaconMessage::ContentHandler& handler) {
    if (isDataType_) beaconData().rangingBeacons(beacons);
    if (isMessageType_ && !beacons.empty()) filterForContent(beacons, handler);
}

void VLBeaconRegionSession::filterForContent(const std::vector<CLBeacon>& beacons,
                                             const VLBeaconMessage::ContentHandler& handler) {
    beaconMessage_->filterBeaconsForContent(beacons, handler);
    if (!beaconMessage_->isBeaconsInCooloff() || isDataType_) return;
    logMessage(VLLogLevel::Debug, fmt::format("Stopping ranging due to all ranged beacons being in cool off mode: {}",
                                              vl_description(beacons)));
    manager_->stopRangingBeaconsInRegion(region_);
}

void VLBeaconRegionSession::didExit() {
    // A visit that an earlier configuration opened gets its end too.
    if (isDataType_ || regionSessionData_->id()) beaconData().didExitRegion();
    if (isMessageType_) beaconMessage_->didExitRegion();
}

VLBeaconData& VLBeaconRegionSession::beaconData() {
    if (!beaconData_) {
        beaconData_ =
            std::make_unique<VLBeaconData>(settings_, regionSessionData_, urlBuilder_, urlSession_, payloadBuilder_);
    }
    return *beaconData_;
}

}  // namespace vorlane

#pragma once

#include <memory>
#include <vector>

#include "Beacons/VLBeaconMessage.h"
#include "Platform/CLBeacon.h"

namespace vorlane {

class CLBeaconRegion;
class CLLocationManager;
class VLBeaconData;
class VLBeaconRegionSessionData;
class VLBeaconsConfig;
class VLPayloadBuilder;
class VLSettings;
class VLURLBuilder;
class VLURLSession;

/// The session of one beacon region. Passes the events of the region to data collection, to messages, to both or to
/// neither, according to the rules at the time of its construction. Main queue only.
class VLBeaconRegionSession {
public:
    /// `initWithRegion:withLocationManager:withConfig:withSettings:withRegionSessionData:withBeaconMessage:urlBuilder:`
    /// `urlSession:payloadBuilder:`
    VLBeaconRegionSession(std::shared_ptr<CLBeaconRegion> region, std::shared_ptr<CLLocationManager> manager,
                          std::shared_ptr<VLBeaconsConfig> config, std::shared_ptr<VLSettings> settings,
                          std::shared_ptr<VLBeaconRegionSessionData> regionSessionData,
                          std::shared_ptr<VLBeaconMessage> beaconMessage, std::shared_ptr<VLURLBuilder> urlBuilder,
                          std::shared_ptr<VLURLSession> urlSession, std::shared_ptr<VLPayloadBuilder> payloadBuilder);
    ~VLBeaconRegionSession();

    void didEnter();
    /// `rangingBeacons:withContentCompletionHandler:` passes the handler, which may be empty, to
    /// `VLBeaconMessage::filterBeaconsForContent()`. Stops ranging if all beacons are in cool-off and the session does
    /// not collect data.
    void rangingBeacons(const std::vector<CLBeacon>& beacons, const VLBeaconMessage::ContentHandler& handler);
    /// Closes an open visit, also if no rule for data covers the region any more.
    void didExit();

    /// Whether a rule for messages covers this region, and whether a rule for data does.
    bool isMessageType() const { return isMessageType_; }
    bool isDataType() const { return isDataType_; }

    /// Made on first use.
    VLBeaconData& beaconData();
    const std::shared_ptr<VLBeaconMessage>& beaconMessage() const { return beaconMessage_; }
    const std::shared_ptr<CLBeaconRegion>& region() const { return region_; }

private:
    void filterForContent(const std::vector<CLBeacon>& beacons, const VLBeaconMessage::ContentHandler& handler);

    // Fixed at construction.
    const std::shared_ptr<CLBeaconRegion> region_;
    const std::shared_ptr<CLLocationManager> manager_;
    const std::shared_ptr<VLBeaconsConfig> config_;
    const std::shared_ptr<VLSettings> settings_;
    const std::shared_ptr<VLBeaconRegionSessionData> regionSessionData_;
    const std::shared_ptr<VLBeaconMessage> beaconMessage_;
    const std::shared_ptr<VLURLBuilder> urlBuilder_;
    const std::shared_ptr<VLURLSession> urlSession_;
    const std::shared_ptr<VLPayloadBuilder> payloadBuilder_;
    const bool isMessageType_;
    const bool isDataType_;
    std::unique_ptr<VLBeaconData> beaconData_;
};

}  // namespace vorlane

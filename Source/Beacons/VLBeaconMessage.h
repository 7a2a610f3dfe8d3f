#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/CLBeacon.h"
#include "Platform/NSError.h"
#include "Public/VLValue.h"

namespace vorlane {

class CLBeaconRegion;
class UIApplication;
class VLBeaconContentData;
class VLBeaconsConfig;
class VLNotificationHelper;
class VLPayloadBuilder;
class VLSettings;
class VLURLBuilder;
class VLURLSession;

/// Chooses one of the beacons ranged in a region, requests its message from the service and shows it as a local
/// notification. Main queue only.
class VLBeaconMessage : public std::enable_shared_from_this<VLBeaconMessage> {
public:
    /// Receives whether content was requested. Called on the main queue after the request has ended, or before
    /// `filterBeaconsForContent()` returns if there was no request.
    using ContentHandler = std::function<void(bool isRequested)>;

    /// `initWithConfig:withSettings:withRegion:withNotificationHelper:urlBuilder:urlSession:payloadBuilder:`, with the
    /// application for its state.
    VLBeaconMessage(std::shared_ptr<VLBeaconsConfig> config, std::shared_ptr<VLSettings> settings,
                    std::shared_ptr<CLBeaconRegion> region, std::shared_ptr<VLNotificationHelper> notificationHelper,
                    std::shared_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession,
                    std::shared_ptr<VLPayloadBuilder> payloadBuilder, std::shared_ptr<UIApplication> application);
    ~VLBeaconMessage();

    /// `filterBeaconsForContent:withCompletionHandler:` tries the closest beacons, then the others, and requests the
    /// content of the first beacon that is in range and not in cool-off. Does nothing and does not call the handler
    /// while `isBeaconsInCooloff()` is true. The handler may be empty.
    void filterBeaconsForContent(const std::vector<CLBeacon>& beacons, const ContentHandler& handler);

    void didExitRegion() { isBeaconsInCooloff_ = false; }

    /// Whether all beacons of the last attempt were in cool-off.
    bool isBeaconsInCooloff() const { return isBeaconsInCooloff_; }
    /// The data of the beacon tried last. Null before the first.
    const std::shared_ptr<VLBeaconContentData>& beaconData() const { return beaconData_; }
    const std::shared_ptr<CLBeaconRegion>& region() const { return region_; }

    /// `getClosestBeaconArray:` returns the beacons with the lowest known accuracy value.
    static std::vector<CLBeacon> getClosestBeaconArray(const std::vector<CLBeacon>& beacons);

private:
    bool getContentForValidBeacon(const std::vector<CLBeacon>& beacons, const ContentHandler& handler);
    void requestContentForBeaconData(const std::shared_ptr<VLBeaconContentData>& data, const ContentHandler& handler);
    Dictionary configureContentRequest(VLBeaconContentData& data);
    void contentRequestEnded(VLBeaconContentData& data, const std::optional<Dictionary>& answer,
                             const std::optional<NSError>& error);
    bool isShowMessage(VLBeaconContentData& data);
    void contentRequestFailed(VLBeaconContentData& data, const std::optional<NSError>& error);
    void parseContentResponse(const Dictionary& response, VLBeaconContentData& data);
    void displayLocalNotification(const std::optional<std::string>& text, const std::optional<std::string>& phash,
                                  const std::optional<std::string>& sound, const std::optional<Dictionary>& metadata,
                                  VLBeaconContentData& data);

    // Fixed at construction.
    const std::shared_ptr<VLBeaconsConfig> config_;
    const std::shared_ptr<VLSettings> settings_;
    const std::shared_ptr<CLBeaconRegion> region_;
    const std::shared_ptr<VLNotificationHelper> notificationHelper_;
    const std::shared_ptr<VLURLBuilder> urlBuilder_;
    const std::shared_ptr<VLURLSession> urlSession_;
    const std::shared_ptr<VLPayloadBuilder> payloadBuilder_;
    const std::shared_ptr<UIApplication> application_;
    // Main queue only.
    bool isBeaconsInCooloff_ = false;
    std::shared_ptr<VLBeaconContentData> beaconData_;
};

}  // namespace vorlane

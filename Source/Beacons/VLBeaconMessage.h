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

/// Chooses a beacon among those ranged in one region, asks the service for its message and shows it as a local
/// notification. Main queue only.
class VLBeaconMessage : public std::enable_shared_from_this<VLBeaconMessage> {
public:
    /// Told whether content was asked for. Runs on the main queue: once the request has ended, or before
    /// `filterBeaconsForContent()` returns when there was none.
    using ContentHandler = std::function<void(bool isRequested)>;

    /// `initWithConfig:withSettings:withRegion:withNotificationHelper:urlBuilder:urlSession:payloadBuilder:`, with the
    /// application for its state.
    VLBeaconMessage(std::shared_ptr<VLBeaconsConfig> config, std::shared_ptr<VLSettings> settings,
                    std::shared_ptr<CLBeaconRegion> region, std::shared_ptr<VLNotificationHelper> notificationHelper,
                    std::shared_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession,
                    std::shared_ptr<VLPayloadBuilder> payloadBuilder, std::shared_ptr<UIApplication> application);
    ~VLBeaconMessage();

    /// `filterBeaconsForContent:withCompletionHandler:` tries the closest beacons, then the others, and asks for the
    /// content of the first one that is neither in cool-off nor out of range. While `isBeaconsInCooloff()` holds it
    /// does nothing, and the handler, which may be empty, is not called.
    void filterBeaconsForContent(const std::vector<CLBeacon>& beacons, const ContentHandler& handler);

    void didExitRegion() { isBeaconsInCooloff_ = false; }

    /// Whether the last beacons that were looked at were all in cool-off.
    bool isBeaconsInCooloff() const { return isBeaconsInCooloff_; }
    /// Of the beacon that was looked at last; null before the first.
    const std::shared_ptr<VLBeaconContentData>& beaconData() const { return beaconData_; }
    const std::shared_ptr<CLBeaconRegion>& region() const { return region_; }

    /// `getClosestBeaconArray:` gives the beacons of the least accuracy that is known.
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

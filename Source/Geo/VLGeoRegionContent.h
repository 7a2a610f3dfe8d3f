#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

class UIApplication;
class VLNotificationHelper;
class VLPayloadBuilder;
class VLSettings;
class VLURLBuilder;
class VLURLSession;

/// Turns an accepted transition of a geofence into a local notification: asks the service for the region's content and
/// shows what it answers. Keeps no state and retries nothing. Any thread.
class VLGeoRegionContent : public std::enable_shared_from_this<VLGeoRegionContent> {
public:
    /// `initWithSettings:withApplication:withNotificationHelper:urlBuilder:urlSession:payloadBuilder:`
    VLGeoRegionContent(std::shared_ptr<VLSettings> settings, std::shared_ptr<UIApplication> application,
                       std::shared_ptr<VLNotificationHelper> notificationHelper,
                       std::shared_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession,
                       std::shared_ptr<VLPayloadBuilder> payloadBuilder);

    /// `displayNotificationForPlotwiseId:withTransition:` asks for the content of the segment, a text or a number that
    /// is sent as it is; without one it does nothing. The transition is "enter" or "exit". What fails shows nothing.
    void displayNotificationForPlotwiseId(const std::optional<Value>& plotwiseId, const std::string& transition);

    /// `parseNotificationContent:` shows the message of an answer, when it holds one for this application.
    void parseNotificationContent(const Dictionary& response) const;

    /// `displayLocalNotification:phash:sound:metadata:`
    void displayLocalNotification(const std::optional<std::string>& text, const std::optional<std::string>& phash,
                                  const std::string& sound, const std::optional<Dictionary>& metadata) const;

private:
    // Fixed at construction.
    const std::shared_ptr<VLSettings> settings_;
    const std::shared_ptr<UIApplication> application_;
    const std::shared_ptr<VLNotificationHelper> notificationHelper_;
    const std::shared_ptr<VLURLBuilder> urlBuilder_;
    const std::shared_ptr<VLURLSession> urlSession_;
    const std::shared_ptr<VLPayloadBuilder> payloadBuilder_;
};

}  // namespace vorlane

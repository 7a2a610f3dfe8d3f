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

/// Turns an accepted transition of a geofence into a local notification: requests the region's content from the service
/// and shows the answer. Has no state and retries nothing. Any thread.
class VLGeoRegionContent : public std::enable_shared_from_this<VLGeoRegionContent> {
public:
    /// `initWithSettings:withApplication:withNotificationHelper:urlBuilder:urlSession:payloadBuilder:`
    VLGeoRegionContent(std::shared_ptr<VLSettings> settings, std::shared_ptr<UIApplication> application,
                       std::shared_ptr<VLNotificationHelper> notificationHelper,
                       std::shared_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession,
                       std::shared_ptr<VLPayloadBuilder> payloadBuilder);

    /// `displayNotificationForPlotwiseId:withTransition:` requests the content of the segment, a string or a number
    /// that is sent unchanged. Does nothing for `nullopt`. The transition is "enter" or "exit". A failed request shows
    /// no notification.
    void displayNotificationForPlotwiseId(const std::optional<Value>& plotwiseId, const std::string& transition);

    /// `parseNotificationContent:` shows the message of an answer if it has one for this application.
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

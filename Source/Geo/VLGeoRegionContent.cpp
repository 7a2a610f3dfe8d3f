#include "Geo/VLGeoRegionContent.h"

#include <utility>

#include "Core/Base/VLSettings.h"
#include "Network/VLPayloadBuilder.h"
#include "Network/VLPayloadOptions.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Notifications/VLMessageContent.h"
#include "Notifications/VLNotificationHelper.h"

namespace vorlane {

VLGeoRegionContent::VLGeoRegionContent(std::shared_ptr<VLSettings> settings, std::shared_ptr<UIApplication> application,
                                       std::shared_ptr<VLNotificationHelper> notificationHelper,
                                       std::shared_ptr<VLURLBuilder> urlBuilder,
                                       std::shared_ptr<VLURLSession> urlSession,
                                       std::shared_ptr<VLPayloadBuilder> payloadBuilder)
    : settings_(std::move(settings)),
      application_(std::move(application)),
      notificationHelper_(std::move(notificationHelper)),
      urlBuilder_(std::move(urlBuilder)),
      urlSession_(std::move(urlSession)),
      payloadBuilder_(std::move(payloadBuilder)) {}

void VLGeoRegionContent::displayNotificationForPlotwiseId(const std::optional<Value>& plotwiseId,
                                                          const std::string& transition) {
    if (!plotwiseId) return;
    const auto payload = payloadBuilder_->payloadWithOptions([&](VLPayloadOptions& options) {
        options.body = {{"getContent", true},
                        {"geoRegion", Dictionary{{"segmentId", *plotwiseId}, {"status", transition}}}};
        options.includeDeviceData = true;
        options.deviceDataKey = VLPayloadOptions::kDeviceDataKey;
    });
    urlSession_->POSTWithJSONResponse(
        urlBuilder_->geoContentURL(), payload, false,
        [weakSelf = weak_from_this()](const std::optional<Dictionary>& answer, std::int64_t /*status*/,
                                      const std::optional<NSError>& error) {
            const auto self = weakSelf.lock();
            // The session has logged a failure.
            if (self && answer && !error) self->parseNotificationContent(*answer);
        });
}

void VLGeoRegionContent::parseNotificationContent(const Dictionary& response) const {
    const auto message = VLMessageContent::contentWithResponse(response, *settings_, *notificationHelper_);
    if (!message) return;
    displayLocalNotification(message->pushText(), message->phash(), message->sound(), message->metadata());
}

void VLGeoRegionContent::displayLocalNotification(const std::optional<std::string>& text,
                                                  const std::optional<std::string>& phash, const std::string& sound,
                                                  const std::optional<Dictionary>& metadata) const {
    notificationHelper_->displayLocalNotification(text, phash, sound, metadata);
}

}  // namespace vorlane

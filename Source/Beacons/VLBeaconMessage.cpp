#include "Beacons/VLBeaconMessage.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "Beacons/VLBeaconContentData.h"
#include "Beacons/VLBeaconsConfig.h"
#include "Core/Base/VLSettings.h"
#include "Network/VLPayloadBuilder.h"
#include "Network/VLPayloadOptions.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Notifications/VLMessageContent.h"
#include "Notifications/VLNotificationHelper.h"
#include "Platform/Platform.h"
#include "Platform/UIApplication.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

constexpr double kUnknownAccuracy = -1;

/// Intended: the proximity is not checked.
bool isAccuracyKnown(const CLBeacon& beacon) { return beacon.accuracy != kUnknownAccuracy; }

/// Returns infinity if no accuracy is known. NaN is ignored.
double leastAccuracy(const std::vector<CLBeacon>& beacons) {
    double least = std::numeric_limits<double>::infinity();
    for (const auto& beacon : beacons) {
        if (isAccuracyKnown(beacon) && beacon.accuracy < least) least = beacon.accuracy;
    }
    return least;
}

}  // namespace

VLBeaconMessage::VLBeaconMessage(std::shared_ptr<VLBeaconsConfig> config, std::shared_ptr<VLSettings> settings,
                                 std::shared_ptr<CLBeaconRegion> region,
                                 std::shared_ptr<VLNotificationHelper> notificationHelper,
                                 std::shared_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession,
                                 std::shared_ptr<VLPayloadBuilder> payloadBuilder,
                                 std::shared_ptr<UIApplication> application)
    : config_(std::move(config)),
      settings_(std::move(settings)),
      region_(std::move(region)),
      notificationHelper_(std::move(notificationHelper)),
      urlBuilder_(std::move(urlBuilder)),
      urlSession_(std::move(urlSession)),
      payloadBuilder_(std::move(payloadBuilder)),
      application_(std::move(application)) {}

VLBeaconMessage::~VLBeaconMessage() = default;

void VLBeaconMessage::filterBeaconsForContent(const std::vector<CLBeacon>& beacons, const ContentHandler& handler) {
    assertMainQueue();
    if (isBeaconsInCooloff_) return;
    const auto closest = getClosestBeaconArray(beacons);
    auto others = beacons;
    std::erase_if(others, [&closest](const CLBeacon& beacon) { return std::ranges::count(closest, beacon) > 0; });
    isBeaconsInCooloff_ = true;
    if (getContentForValidBeacon(closest, handler) || getContentForValidBeacon(others, handler)) return;
    if (handler) handler(false);
}

std::vector<CLBeacon> VLBeaconMessage::getClosestBeaconArray(const std::vector<CLBeacon>& beacons) {
    std::vector<CLBeacon> closest;
    std::ranges::copy_if(beacons, std::back_inserter(closest), [least = leastAccuracy(beacons)](const auto& beacon) {
        return isAccuracyKnown(beacon) && beacon.accuracy == least;
    });
    return closest;
}

bool VLBeaconMessage::getContentForValidBeacon(const std::vector<CLBeacon>& beacons, const ContentHandler& handler) {
    for (const auto& beacon : beacons) {
        beaconData_ = config_->getBeaconContentData(beacon);
        if (beaconData_->isInCoolOff()) continue;
        // Intended: also for a beacon out of range.
        isBeaconsInCooloff_ = false;
        if (!beaconData_->withinRange()) continue;
        beaconData_->enableCoolOff();
        requestContentForBeaconData(beaconData_, handler);
        return true;
    }
    return false;
}

void VLBeaconMessage::requestContentForBeaconData(const std::shared_ptr<VLBeaconContentData>& data,
                                                  const ContentHandler& handler) {
    const auto body = configureContentRequest(*data);
    logMessage(VLLogLevel::Debug, "Beacon Data content request");
    const auto payload = payloadBuilder_->payloadWithOptions([&body](VLPayloadOptions& options) {
        options.body = body;
        options.includeDeviceData = true;
        options.deviceDataKey = VLPayloadOptions::kDeviceDataKey;
    });
    urlSession_->POSTWithJSONResponse(
        urlBuilder_->beaconContentURL(), payload, false,
        [weakSelf = weak_from_this(), data, handler](std::optional<Dictionary> answer, std::int64_t /*status*/,
                                                     std::optional<NSError> error) {
            // Serialised with the callbacks of the location manager.
            onMainQueue([weakSelf, data, handler, answer = std::move(answer), error = std::move(error)] {
                if (const auto self = weakSelf.lock()) self->contentRequestEnded(*data, answer, error);
                if (handler) handler(true);
            });
        });
}

Dictionary VLBeaconMessage::configureContentRequest(VLBeaconContentData& data) {
    Array beacons;
    if (const auto& beacon = data.beacon()) {
        beacons.emplace_back(Dictionary{{VLBeaconsConfig::uuidKey(), beacon->proximityUUID},
                                        {VLBeaconsConfig::majorKey(), beacon->major},
                                        {VLBeaconsConfig::minorKey(), beacon->minor}});
    }
    const bool isActive = application_->applicationState() == UIApplicationState::Active;
    return {{"getContent", isShowMessage(data)},
            {"ibeacons", Value(std::move(beacons))},
            {"contentType", isActive ? "interstitial, local" : "local"}};
}

bool VLBeaconMessage::isShowMessage(VLBeaconContentData& data) {
    return config_->isNotify() && !data.isMessageLimitReached();
}

void VLBeaconMessage::contentRequestEnded(VLBeaconContentData& data, const std::optional<Dictionary>& answer,
                                          const std::optional<NSError>& error) {
    // Checked again, because messages of other beacons may have been shown meanwhile.
    if (!isShowMessage(data)) return;
    if (answer && !error) {
        parseContentResponse(*answer, data);
    } else {
        contentRequestFailed(data, error);
    }
}

void VLBeaconMessage::contentRequestFailed(VLBeaconContentData& data, const std::optional<NSError>& error) {
    logMessage(VLLogLevel::Debug,
               fmt::format("Error getting beacon content from server: {}", error ? error->description() : "(null)"));
    if (!data.defaultMessage()) return;
    displayLocalNotification(data.defaultMessage(), std::nullopt, std::nullopt, std::nullopt, data);
}

void VLBeaconMessage::parseContentResponse(const Dictionary& response, VLBeaconContentData& data) {
    const auto content = VLMessageContent::contentWithResponse(response, *settings_, *notificationHelper_);
    if (!content) return logMessage(VLLogLevel::Debug, "Beacon Content not available and no default message");
    logMessage(VLLogLevel::Debug, "Beacon Content available, displaying message");
    displayLocalNotification(content->pushText(), content->phash(), content->sound(), content->metadata(), data);
}

void VLBeaconMessage::displayLocalNotification(const std::optional<std::string>& text,
                                               const std::optional<std::string>& phash,
                                               const std::optional<std::string>& sound,
                                               const std::optional<Dictionary>& metadata, VLBeaconContentData& data) {
    notificationHelper_->displayLocalNotification(text, phash, sound, metadata);
    data.incrementMessageCount();
}

}  // namespace vorlane

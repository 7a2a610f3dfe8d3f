#include "Beacons/VLBeaconRegionSessions.h"

#include <fmt/format.h>

#include <utility>

#include "Beacons/VLBeaconMessage.h"
#include "Beacons/VLBeaconRegionSession.h"
#include "Beacons/VLBeaconRegionSessionData.h"
#include "Beacons/VLBeaconRegionSessionsData.h"
#include "Categories/CLBeaconRegion+VLRegionId.h"
#include "Platform/CLBeaconRegion.h"
#include "Public/VLLog.h"

namespace vorlane {

VLBeaconRegionSessions::VLBeaconRegionSessions(
    std::weak_ptr<CLLocationManager> locationManager, std::weak_ptr<VLSettings> settings,
    std::weak_ptr<VLBeaconsConfig> config, std::shared_ptr<VLNotificationHelper> notificationHelper,
    std::shared_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession,
    std::shared_ptr<VLPayloadBuilder> payloadBuilder, std::shared_ptr<UIApplication> application)
    : locationManager_(std::move(locationManager)),
      settings_(std::move(settings)),
      config_(std::move(config)),
      notificationHelper_(std::move(notificationHelper)),
      urlBuilder_(std::move(urlBuilder)),
      urlSession_(std::move(urlSession)),
      payloadBuilder_(std::move(payloadBuilder)),
      application_(std::move(application)),
      regionSessionsData_(std::make_shared<VLBeaconRegionSessionsData>()) {}

VLBeaconRegionSessions::~VLBeaconRegionSessions() = default;

std::shared_ptr<VLBeaconRegionSession> VLBeaconRegionSessions::getSessionWithRegion(
    const std::shared_ptr<CLBeaconRegion>& region) {
    const auto regionId = vl_getRegionId(*region);
    const auto found = beaconRegionSessions_.find(regionId);
    if (found != beaconRegionSessions_.end()) return found->second;
    auto session = makeSession(region);
    if (session) beaconRegionSessions_[regionId] = session;
    return session;
}

std::shared_ptr<VLBeaconRegionSession> VLBeaconRegionSessions::makeSession(
    const std::shared_ptr<CLBeaconRegion>& region) const {
    const auto manager = locationManager_.lock();
    const auto settings = settings_.lock();
    const auto config = config_.lock();
    if (!manager || !settings || !config) return nullptr;
    auto message = std::make_shared<VLBeaconMessage>(config, settings, region, notificationHelper_, urlBuilder_,
                                                     urlSession_, payloadBuilder_, application_);
    return std::make_shared<VLBeaconRegionSession>(region, manager, config, settings,
                                                   getBeaconRegionSessionData(region), std::move(message), urlBuilder_,
                                                   urlSession_, payloadBuilder_);
}

std::shared_ptr<VLBeaconRegionSessionData> VLBeaconRegionSessions::getBeaconRegionSessionData(
    const std::shared_ptr<CLBeaconRegion>& region) const {
    return std::make_shared<VLBeaconRegionSessionData>(region, regionSessionsData_);
}

void VLBeaconRegionSessions::startBackgroundTaskExtensionTime(const std::shared_ptr<CLBeaconRegion>& region) {
    if (rangingBabysitterTask_ != UIBackgroundTaskInvalid) return;
    if (!getBeaconRegionSessionData(region)->id()) {
        return logMessage(VLLogLevel::Debug, fmt::format("Inside beacon region but did not record an enter event:{}",
                                                         region->description()));
    }
    rangingBabysitterTask_ = application_->beginBackgroundTaskWithExpirationHandler([weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock()) self->backgroundTaskExpired();
    });
    logMessage(VLLogLevel::Debug, "started background task.");
}

void VLBeaconRegionSessions::backgroundTaskExpired() {
    logMessage(VLLogLevel::Debug, "expired background task.");
    application_->endBackgroundTask(std::exchange(rangingBabysitterTask_, UIBackgroundTaskInvalid));
}

}  // namespace vorlane

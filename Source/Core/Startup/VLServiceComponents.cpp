#include "Core/Startup/VLServiceComponents.h"

#include <type_traits>
#include <utility>

#include "Beacons/VLBeaconRegionSessions.h"
#include "Beacons/VLBeaconService.h"
#include "Beacons/VLBeaconsConfig.h"
#include "Core/Base/VLSettings.h"
#include "Core/Startup/VLBootstrap.h"
#include "Core/Startup/VLIOSComponents.h"
#include "Core/Startup/VLLifeCycleManager.h"
#include "Geo/VLGeoRegionContent.h"
#include "Geo/VLGeoService.h"
#include "Geo/VLLocationService.h"
#include "Inbox/VLInboxService.h"
#include "Network/VLPayloadBuilder.h"
#include "Network/VLURLActions.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Notifications/VLAuthorisationHelper_iOS10To11.h"
#include "Notifications/VLAuthorisationHelper_iOS12Plus.h"
#include "Notifications/VLBackgroundRefreshHelper.h"
#include "Notifications/VLInterstitialService.h"
#include "Notifications/VLLocalNotificationService.h"
#include "Notifications/VLNotificationHelper.h"
#include "Notifications/VLPermissionService.h"
#include "Notifications/VLRemoteNotificationService.h"
#include "Notifications/VLUserNotificationCentre_iOS10Plus.h"
#include "Notifications/VLUserNotificationCentre_iOS8To9.h"
#include "Platform/CLLocationManager.h"
#include "Platform/NSBundle.h"
#include "Platform/NSNotificationCenter.h"
#include "Platform/NSURLSession.h"
#include "Platform/Platform.h"
#include "Platform/UIApplication.h"
#include "Platform/UIDevice.h"
#include "Platform/UNUserNotificationCenter.h"
#include "Public/VLURLs.h"
#include "Tracking/VLConfigService.h"
#include "Tracking/VLEventService.h"
#include "Tracking/VLSessionService.h"
#include "Tracking/VLTagsService.h"

namespace vorlane {

namespace {

// The platform generations whose notifications differ.
constexpr double kNotificationCenterVersion = 10.0;
constexpr double kProvisionalVersion = 12.0;

std::shared_ptr<VLSettings> createSettings(VLBootstrap& components) {
    return std::make_shared<VLSettings>(components.getComponent<UIDevice>());
}

std::shared_ptr<VLPayloadBuilder> createPayloadBuilder(VLBootstrap& components) {
    return std::make_shared<VLPayloadBuilder>(components.getComponent<UIDevice>(),
                                              components.getComponent<VLSettings>());
}

std::shared_ptr<VLURLSession> vlURLSession(VLBootstrap& components) {
    return std::make_shared<VLURLSession>(components.getComponent<NSURLSession>(),
                                          components.getComponent<UIApplication>());
}

std::shared_ptr<VLEventService> createEventService(VLBootstrap& components) {
    return std::make_shared<VLEventService>(
        components.getComponent<VLSettings>(), components.getComponent<VLURLBuilder>(),
        components.getComponent<VLPayloadBuilder>(), components.getComponent<VLURLSession>());
}

std::shared_ptr<VLConfigService> createConfigService(VLBootstrap& components) {
    return std::make_shared<VLConfigService>(components.getComponent<VLSettings>(),
                                             components.getComponent<VLURLBuilder>(),
                                             components.getComponent<VLURLSession>());
}

std::shared_ptr<VLTagsService> createTagsService(VLBootstrap& components) {
    return std::make_shared<VLTagsService>(
        components.getComponent<VLSettings>(), components.getComponent<VLURLBuilder>(),
        components.getComponent<VLPayloadBuilder>(), components.getComponent<VLURLSession>());
}

std::shared_ptr<VLSessionService> createSessionService(VLBootstrap& components) {
    return std::make_shared<VLSessionService>(
        components.getComponent<VLSettings>(), components.getComponent<VLRemoteNotificationService>(),
        components.getComponent<VLURLSession>(), components.getComponent<VLURLBuilder>(),
        components.getComponent<VLPayloadBuilder>(), components.getComponent<NSBundle>());
}

std::shared_ptr<VLLifeCycleManager> createLifeCycleManager(VLBootstrap& components) {
    return std::make_shared<VLLifeCycleManager>(
        components.getComponent<VLSettings>(), components.getComponent<VLSessionService>(),
        components.getComponent<VLLocationService>(), components.getComponent<VLPermissionService>(),
        components.getComponent<VLConfigService>(), components.getComponent<NSNotificationCenter>(),
        components.getComponent<NSBundle>());
}

std::shared_ptr<VLInterstitialService> createInterstitialService(VLBootstrap& components) {
    return VLInterstitialService::serviceWith({.settings = components.getComponent<VLSettings>(),
                                               .urlBuilder = components.getComponent<VLURLBuilder>(),
                                               .urlSession = components.getComponent<VLURLSession>(),
                                               .payloadBuilder = components.getComponent<VLPayloadBuilder>(),
                                               .application = components.getComponent<UIApplication>(),
                                               .notificationCenter = components.getComponent<NSNotificationCenter>()});
}

std::shared_ptr<VLPermissionService> createPermissionService(VLBootstrap& components) {
    return std::make_shared<VLPermissionService>(
        components.getComponent<VLUserNotificationCentre>(), components.getComponent<CLLocationManager>(),
        components.getComponent<VLSettings>(), components.getComponent<VLInterstitialService>(),
        components.getComponent<VLRemoteNotificationService>());
}

std::shared_ptr<VLURLActions> createURLActions(VLBootstrap& components) {
    return std::make_shared<VLURLActions>(components.getComponent<VLPermissionService>(),
                                          components.getComponent<UIApplication>());
}

std::shared_ptr<VLNotificationHelper> createNotificationHelper(VLBootstrap& components) {
    return std::make_shared<VLNotificationHelper>(components.getComponent<UIApplication>(),
                                                  components.getComponent<UIDevice>(),
                                                  components.getComponent<NSBundle>());
}

std::shared_ptr<VLRemoteNotificationService> remoteNotificationService(VLBootstrap& components) {
    return VLRemoteNotificationService::serviceWith(
        {.settings = components.getComponent<VLSettings>(),
         .notificationCenter = components.getComponent<NSNotificationCenter>(),
         .application = components.getComponent<UIApplication>(),
         .urlSession = components.getComponent<VLURLSession>(),
         .urlBuilder = components.getComponent<VLURLBuilder>(),
         .payloadBuilder = components.getComponent<VLPayloadBuilder>(),
         .vlUserNotificationCentre = components.getComponent<VLUserNotificationCentre>(),
         .backgroundRefreshHelper = components.getComponent<VLBackgroundRefreshHelper>()});
}

std::shared_ptr<VLLocalNotificationService> createLocalNotificationService(VLBootstrap& components) {
    return VLLocalNotificationService::serviceWith(
        {.settings = components.getComponent<VLSettings>(),
         .notificationHelper = components.getComponent<VLNotificationHelper>(),
         .application = components.getComponent<UIApplication>(),
         .urlBuilder = components.getComponent<VLURLBuilder>(),
         .urlSession = components.getComponent<VLURLSession>(),
         .payloadBuilder = components.getComponent<VLPayloadBuilder>(),
         .notificationCenter = components.getComponent<NSNotificationCenter>()});
}

std::shared_ptr<VLGeoRegionContent> createGeoRegionContent(VLBootstrap& components) {
    return std::make_shared<VLGeoRegionContent>(
        components.getComponent<VLSettings>(), components.getComponent<UIApplication>(),
        components.getComponent<VLNotificationHelper>(), components.getComponent<VLURLBuilder>(),
        components.getComponent<VLURLSession>(), components.getComponent<VLPayloadBuilder>());
}

std::shared_ptr<VLGeoService> createGeoService(VLBootstrap& components) {
    return std::make_shared<VLGeoService>(
        components.getComponent<CLLocationManager>(), components.getComponent<VLSettings>(),
        components.getComponent<VLGeoRegionContent>(), components.getComponent<VLURLBuilder>(),
        components.getComponent<VLURLSession>());
}

std::shared_ptr<VLInboxService> createInboxService(VLBootstrap& components) {
    return VLInboxService::serviceWith({.settings = components.getComponent<VLSettings>(),
                                        .eventService = components.getComponent<VLEventService>(),
                                        .configService = components.getComponent<VLConfigService>(),
                                        .urlBuilder = components.getComponent<VLURLBuilder>(),
                                        .urlSession = components.getComponent<VLURLSession>(),
                                        .imageSession = components.getComponent<NSURLSession>()});
}

std::shared_ptr<VLLocationService> createLocationService(VLBootstrap& components) {
    return VLLocationService::serviceWith({.settings = components.getComponent<VLSettings>(),
                                           .configService = components.getComponent<VLConfigService>(),
                                           .beacons = components.getComponent<VLBeaconService>(),
                                           .locationManager = components.getComponent<CLLocationManager>(),
                                           .geoService = components.getComponent<VLGeoService>(),
                                           .mainBundle = components.getComponent<NSBundle>(),
                                           .application = components.getComponent<UIApplication>()});
}

std::shared_ptr<VLBeaconsConfig> createBeaconsConfig(VLBootstrap& components) {
    return std::make_shared<VLBeaconsConfig>(components.getComponent<VLSettings>());
}

std::shared_ptr<VLBeaconRegionSessions> createBeaconRegionSessions(VLBootstrap& components) {
    return std::make_shared<VLBeaconRegionSessions>(
        components.getComponent<CLLocationManager>(), components.getComponent<VLSettings>(),
        components.getComponent<VLBeaconsConfig>(), components.getComponent<VLNotificationHelper>(),
        components.getComponent<VLURLBuilder>(), components.getComponent<VLURLSession>(),
        components.getComponent<VLPayloadBuilder>(), components.getComponent<UIApplication>());
}

std::shared_ptr<VLBeaconService> createBeaconService(VLBootstrap& components) {
    return std::make_shared<VLBeaconService>(
        components.getComponent<CLLocationManager>(), components.getComponent<VLSettings>(),
        components.getComponent<VLConfigService>(), components.getComponent<VLBeaconsConfig>(),
        components.getComponent<VLBeaconRegionSessions>());
}

std::shared_ptr<VLBackgroundRefreshHelper> createBackgroundRefreshHelper(VLBootstrap& components) {
    return std::make_shared<VLBackgroundRefreshHelper>(components.getComponent<UIApplication>());
}

/// Null on a platform that has no use for it.
std::shared_ptr<VLAuthorisationHelper> authorisationHelper(VLBootstrap& /*components*/) {
    const double version = Platform::current().systemVersion();
    if (version >= kProvisionalVersion) return std::make_shared<VLAuthorisationHelper_iOS12Plus>();
    if (version >= kNotificationCenterVersion) return std::make_shared<VLAuthorisationHelper_iOS10To11>();
    return nullptr;
}

std::shared_ptr<VLUserNotificationCentre> vlUserNotificationCentre(VLBootstrap& components) {
    if (Platform::current().systemVersion() < kNotificationCenterVersion) {
        return std::make_shared<VLUserNotificationCentre_iOS8To9>(components.getComponent<UIApplication>(),
                                                                  components.getComponent<VLSettings>(),
                                                                  components.getComponent<VLBackgroundRefreshHelper>());
    }
    return std::make_shared<VLUserNotificationCentre_iOS10Plus>(
        components.getComponent<UNUserNotificationCenter>(), components.getComponent<UIApplication>(),
        components.getComponent<VLAuthorisationHelper>(), components.getComponent<VLBackgroundRefreshHelper>(),
        components.getComponent<VLSettings>());
}

}  // namespace

VLServiceComponents::VLServiceComponents(VLBootstrap& bootstrap, std::unique_ptr<VLIOSComponents> iosComponents)
    : bootstrap_(bootstrap), iosComponents_(std::move(iosComponents)) {}

VLServiceComponents::~VLServiceComponents() = default;

void VLServiceComponents::defaultVLServices(const std::shared_ptr<VLURLs>& urls) {
    defaultVLServiceDependencies(urls);
    add(createPayloadBuilder);
    add(vlURLSession);
    add(createEventService);
    add(createConfigService);
    add(createInterstitialService);
    add(createNotificationHelper);
    add(createPermissionService);
    add(remoteNotificationService);
    add(createTagsService);
    add(createBeaconsConfig);
    add(createBeaconRegionSessions);
    add(createBeaconService);
    add(createSessionService);
    add(createLifeCycleManager);
    add(createLocalNotificationService);
    add(createGeoRegionContent);
    add(createGeoService);
    add(createInboxService);
    add(createLocationService);
    add(createBackgroundRefreshHelper);
    add(authorisationHelper);
    add(vlUserNotificationCentre);
    add(createURLActions);
}

void VLServiceComponents::defaultVLServiceDependencies(const std::shared_ptr<VLURLs>& urls) {
    iosComponents_->defaultUIKitDependencies();
    iosComponents_->defaultCoreLocationDependencies();
    add(createSettings);
    add([urls](VLBootstrap& components) {
        return std::make_shared<VLURLBuilder>(urls, components.getComponent<VLSettings>());
    });
}

template <class Make>
void VLServiceComponents::add(Make make) {
    using T = typename std::invoke_result_t<Make, VLBootstrap&>::element_type;
    bootstrap_.addComponent<T>([components = bootstrap_.weak_from_this(), make]() -> std::shared_ptr<T> {
        const auto registry = components.lock();
        return registry ? make(*registry) : nullptr;
    });
}

}  // namespace vorlane

#include "Core/Startup/VLServiceComponents.h"

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

/// Makes a T from the registry's shared instances of its dependencies, in the order of T's constructor or of its
/// `Collaborators`.
template <class T, class... Dependencies>
std::shared_ptr<T> make(VLBootstrap& components) {
    if constexpr (requires { typename T::Collaborators; }) {
        return T::serviceWith({components.getComponent<Dependencies>()...});
    } else {
        return std::make_shared<T>(components.getComponent<Dependencies>()...);
    }
}

/// Null on a platform below 10.0.
std::shared_ptr<VLAuthorisationHelper> authorisationHelper(VLBootstrap& /*components*/) {
    const double version = Platform::current().systemVersion();
    if (version >= kProvisionalVersion) return std::make_shared<VLAuthorisationHelper_iOS12Plus>();
    if (version >= kNotificationCenterVersion) return std::make_shared<VLAuthorisationHelper_iOS10To11>();
    return nullptr;
}

std::shared_ptr<VLUserNotificationCentre> vlUserNotificationCentre(VLBootstrap& components) {
    if (Platform::current().systemVersion() < kNotificationCenterVersion) {
        return make<VLUserNotificationCentre_iOS8To9, UIApplication, VLSettings, VLBackgroundRefreshHelper>(components);
    }
    return make<VLUserNotificationCentre_iOS10Plus, UNUserNotificationCenter, UIApplication, VLAuthorisationHelper,
                VLBackgroundRefreshHelper, VLSettings>(components);
}

}  // namespace

VLServiceComponents::VLServiceComponents(VLBootstrap& bootstrap, std::unique_ptr<VLIOSComponents> iosComponents)
    : bootstrap_(bootstrap), iosComponents_(std::move(iosComponents)) {}

VLServiceComponents::~VLServiceComponents() = default;

void VLServiceComponents::defaultVLServices(const std::shared_ptr<VLURLs>& urls) {
    defaultVLServiceDependencies(urls);
    add<VLPayloadBuilder, UIDevice, VLSettings>();
    add<VLURLSession, NSURLSession, UIApplication>();
    add<VLEventService, VLSettings, VLURLBuilder, VLPayloadBuilder, VLURLSession>();
    add<VLConfigService, VLSettings, VLURLBuilder, VLURLSession>();
    add<VLInterstitialService, VLSettings, VLURLBuilder, VLURLSession, VLPayloadBuilder, UIApplication,
        NSNotificationCenter>();
    add<VLNotificationHelper, UIApplication, UIDevice, NSBundle>();
    add<VLPermissionService, VLUserNotificationCentre, CLLocationManager, VLSettings, VLInterstitialService,
        VLRemoteNotificationService>();
    add<VLGeoRegionContent, VLSettings, UIApplication, VLNotificationHelper, VLURLBuilder, VLURLSession,
        VLPayloadBuilder>();
    add<VLGeoService, CLLocationManager, VLSettings, VLGeoRegionContent, VLURLBuilder, VLURLSession>();
    add<VLRemoteNotificationService, VLSettings, NSNotificationCenter, UIApplication, VLURLSession, VLURLBuilder,
        VLPayloadBuilder, VLUserNotificationCentre, VLBackgroundRefreshHelper>();
    add<VLTagsService, VLSettings, VLURLBuilder, VLPayloadBuilder, VLURLSession>();
    add<VLBeaconsConfig, VLSettings>();
    add<VLBeaconRegionSessions, CLLocationManager, VLSettings, VLBeaconsConfig, VLNotificationHelper, VLURLBuilder,
        VLURLSession, VLPayloadBuilder, UIApplication>();
    add<VLBeaconService, CLLocationManager, VLSettings, VLConfigService, VLBeaconsConfig, VLBeaconRegionSessions>();
    add<VLLocationService, VLSettings, VLConfigService, VLBeaconService, CLLocationManager, VLGeoService, NSBundle,
        UIApplication>();
    add<VLSessionService, VLSettings, VLRemoteNotificationService, VLURLSession, VLURLBuilder, VLPayloadBuilder,
        NSBundle>();
    add<VLLifeCycleManager, VLSettings, VLSessionService, VLLocationService, VLPermissionService, VLConfigService,
        NSNotificationCenter, NSBundle>();
    add<VLLocalNotificationService, VLSettings, VLNotificationHelper, UIApplication, VLURLBuilder, VLURLSession,
        VLPayloadBuilder, NSNotificationCenter>();
    add<VLInboxService, VLSettings, VLEventService, VLConfigService, VLURLBuilder, VLURLSession, NSURLSession>();
    add<VLBackgroundRefreshHelper, UIApplication>();
    addFactory<VLAuthorisationHelper>(authorisationHelper);
    addFactory<VLUserNotificationCentre>(vlUserNotificationCentre);
    add<VLURLActions, VLPermissionService, UIApplication>();
}

void VLServiceComponents::defaultVLServiceDependencies(const std::shared_ptr<VLURLs>& urls) {
    iosComponents_->defaultUIKitDependencies();
    iosComponents_->defaultCoreLocationDependencies();
    add<VLSettings, UIDevice>();
    addFactory<VLURLBuilder>([urls](VLBootstrap& components) {
        return std::make_shared<VLURLBuilder>(urls, components.getComponent<VLSettings>());
    });
}

template <class T, class... Dependencies>
void VLServiceComponents::add() {
    addFactory<T>(make<T, Dependencies...>);
}

template <class T, class Make>
void VLServiceComponents::addFactory(Make make) {
    bootstrap_.addComponent<T>([components = bootstrap_.weak_from_this(), make]() -> std::shared_ptr<T> {
        const auto registry = components.lock();
        return registry ? make(*registry) : nullptr;
    });
}

}  // namespace vorlane

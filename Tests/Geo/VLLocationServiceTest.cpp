#include "Geo/VLLocationService.h"

#include <gtest/gtest.h>

#include <limits>

#include "Beacons/VLBeaconService.h"
#include "Core/Base/VLSettings.h"
#include "Core/Startup/VLBootstrap.h"
#include "Geo/VLGeoService.h"
#include "Geo/VLLocationHelper.h"
#include "Platform/CLBeaconRegion.h"
#include "Platform/CLCircularRegion.h"
#include "Platform/NSBundle.h"
#include "Public/VLURLsProduction.h"
#include "Tests/Support/FakeLocationManager.h"
#include "Tests/Support/SimulatedPhoneTest.h"
#include "Tracking/VLConfigService.h"

namespace vorlane {

namespace {

using RegionEvent = SimulatedLocationManager::RegionEvent;
using Status = CLAuthorizationStatus;

const std::string kUUID = "B9407F30-F5F8-466E-AFF9-25556B57FE6D";
const std::string kGeo = R"({"services":{"geo_regions":true},"configs":{"geo_regions":{"geo_mode":2}}})";
const std::string kBeacons =
    R"({"services":{"beacon":true},"configs":{"beacon":{"beacon_data":[{"type":"data","beacon_type":"ibeacon",)"
    R"("uuid":"B9407F30-F5F8-466E-AFF9-25556B57FE6D","major":1,"minor":2}]}}})";
const std::string kBoth = R"({"services":{"geo_regions":true,"beacon":true}})";
const std::string kMode1Text =
    "Found geo config set to Mode 1, but this mode is no longer supported as of" + std::string(28, ' ') +
    "Vorlane SDK 2.0.0! To fix this issue, contact Vorlane Support to set" + std::string(28, ' ') +
    "your geo config to Mode 2. SDK geo features are disabled for now.";
const std::string kNoUsageKeyText = "Location monitoring features are disabled because the" + std::string(28, ' ') +
                                    "NSLocationAlwaysUsageDescription key is missing from your Info.plist.";
const std::string kNoBackgroundModeText =
    "Beacon ranging is disabled because the UIBackgroundModes \"location\" entry is missing" + std::string(20, ' ') +
    "from your Info.plist.";
const std::string kSwitchedOn = "App has Location Updates switched ON";
const std::string kSwitchedOff = "App has Location Updates switched OFF";

const Value kUsage = "to show what is near";
const Value kModes = Array{"location"};

class VLLocationServiceTest : public SimulatedPhoneTest {
protected:
    explicit VLLocationServiceTest(Dictionary info = {{"NSLocationAlwaysUsageDescription", kUsage},
                                                      {"UIBackgroundModes", kModes}})
        : SimulatedPhoneTest({.infoDictionary = std::move(info)}) {
        settings->setAppKey("K");
        phone().simulatedApplication().setEventObserver([this](const std::string& event, const Dictionary& fields) {
            if (event == "significantLocationChanges") significantChanges.push_back(fields.at("on").get<bool>());
        });
    }

    SimulatedLocationManager& manager() { return phone().simulatedLocationManager(); }
    SimulatedApplication& application() { return phone().simulatedApplication(); }

    void configure(const std::string& body) {
        components->getComponent<VLConfigService>()->loadConfigWithCompletion(nullptr);
        session().answer("/config/application/ios/", 200, body);
        phone().settle();
    }
    /// Starts the service with this configuration.
    void start(const std::string& body) {
        configure(body);
        service->startWithConfig();
        phone().settle();
    }
    int debugLines(const std::string& message) { return log().count(message, VLLogLevel::Debug); }

    /// The value passed to the handler, or `nullopt` if it was not called.
    std::optional<bool> update(bool beacons, bool significant) {
        std::optional<bool> answer;
        service->configUpdateWithBeacons(beacons, significant, [&](bool success) { answer = success; });
        return answer;
    }
    /// Whether the device is capable of geofences and of ranging.
    std::pair<bool, bool> capabilities() {
        std::pair<bool, bool> found;
        service->checkLocationRegionsAvailableForMonitoring([&](bool geo, bool ranging) { found = {geo, ranging}; });
        return found;
    }
    void happens(RegionEvent event, const std::shared_ptr<CLRegion>& region) {
        manager().deliverRegionEvent(event, region);
        phone().settle();
    }

    std::shared_ptr<VLBootstrap> components = VLBootstrap::bootstrapWithURLs(std::make_shared<VLURLsProduction>());
    std::shared_ptr<VLSettings> settings = components->getComponent<VLSettings>();
    std::shared_ptr<VLLocationService> service = components->getComponent<VLLocationService>();
    std::shared_ptr<CLRegion> circle = std::make_shared<CLCircularRegion>(CLLocationCoordinate2D{1, 2}, 3, "circle");
    std::shared_ptr<CLBeaconRegion> shop = std::make_shared<CLBeaconRegion>(kUUID, "shop");
    std::vector<bool> significantChanges;
};

class VLLocationServiceWithoutUsageKeyTest : public VLLocationServiceTest {
protected:
    VLLocationServiceWithoutUsageKeyTest() : VLLocationServiceTest({{"UIBackgroundModes", kModes}}) {}
};

class VLLocationServiceWithoutBackgroundModeTest : public VLLocationServiceTest {
protected:
    VLLocationServiceWithoutBackgroundModeTest()
        : VLLocationServiceTest({{"NSLocationAlwaysUsageDescription", kUsage}, {"UIBackgroundModes", Array{"fetch"}}}) {
    }
};

TEST_F(VLLocationServiceTest, IsTheDelegateAndRequestsTheBestAccuracy) {
    EXPECT_EQ(manager().desiredAccuracy(), kCLLocationAccuracyBest);
    EXPECT_FALSE(service->isLocationTrackingEnabled());
    manager().setAuthorizationStatus(Status::AuthorizedAlways);
    phone().settle();
    EXPECT_TRUE(service->isLocationTrackingEnabled());
}

TEST_F(VLLocationServiceWithoutUsageKeyTest, AccuracyStaysUnchanged) {
    EXPECT_EQ(manager().desiredAccuracy(), std::nullopt);
}

TEST_F(VLLocationServiceTest, EnabledGeoForcesAFetchInTheForeground) {
    configure(R"({"services":{"geo_regions":true},"configs":{"geo_regions":{"significant_distance_m":7}}})");
    service->startWithConfig();
    EXPECT_TRUE(service->isLocationTrackingEnabled());
    EXPECT_EQ(settings->significantDistance(), 7);
    EXPECT_FALSE(settings->forceGeoConfigUpdate());  // only later, on the main queue
    EXPECT_TRUE(significantChanges.empty());
    phone().settle();
    EXPECT_TRUE(settings->forceGeoConfigUpdate());
    EXPECT_EQ(significantChanges, std::vector<bool>{true});
    EXPECT_TRUE(manager().allowsBackgroundLocationUpdates());
    EXPECT_EQ(debugLines(kSwitchedOn), 1);
}

TEST_F(VLLocationServiceTest, BackgroundForcesNoFetch) {
    application().setApplicationState(UIApplicationState::Background);
    start(kGeo);
    EXPECT_FALSE(settings->forceGeoConfigUpdate());
    EXPECT_EQ(significantChanges, std::vector<bool>{true});
}

TEST_F(VLLocationServiceTest, InactiveForcesAFetch) {
    application().setApplicationState(UIApplicationState::Inactive);
    start(kGeo);
    EXPECT_TRUE(settings->forceGeoConfigUpdate());
}

TEST_F(VLLocationServiceTest, Mode1WithoutBeaconsSwitchesTrackingOff) {
    start(R"({"services":{"geo_regions":true},"configs":{"geo_regions":{"geo_mode":1}}})");
    EXPECT_FALSE(service->isLocationTrackingEnabled());
    EXPECT_EQ(log().count(kMode1Text, VLLogLevel::Error), 1);
    EXPECT_EQ(debugLines(kSwitchedOff), 1);
    EXPECT_EQ(significantChanges, std::vector<bool>{false});
}

TEST_F(VLLocationServiceTest, Mode1WithBeaconsKeepsTrackingOn) {
    start(R"({"services":{"geo_regions":true,"beacon":true},"configs":{"geo_regions":{"geo_mode":1}}})");
    EXPECT_TRUE(service->isLocationTrackingEnabled());
    EXPECT_EQ(log().count(kMode1Text, VLLogLevel::Error), 1);
    EXPECT_EQ(significantChanges, std::vector<bool>{true});
}

TEST_F(VLLocationServiceTest, OnlyMode1IsUnsupported) {
    for (const auto* mode : {"1", "1.0", "1.9", "\"1\""}) {
        start(std::string(R"({"services":{"geo_regions":1},"configs":{"geo_regions":{"geo_mode":)") + mode + "}}}");
        EXPECT_FALSE(service->isLocationTrackingEnabled()) << mode;
    }
    for (const auto* mode : {"0", "2", "0.9", "-1", "11", "\"2\"", "\"one\"", "true", "null", "[1]"}) {
        start(std::string(R"({"services":{"geo_regions":1},"configs":{"geo_regions":{"geo_mode":)") + mode + "}}}");
        EXPECT_TRUE(service->isLocationTrackingEnabled()) << mode;
    }
    start(R"({"services":{"geo_regions":true}})");
    EXPECT_TRUE(service->isLocationTrackingEnabled());
    EXPECT_EQ(log().count(kMode1Text, VLLogLevel::Error), 4);
}

TEST_F(VLLocationServiceTest, TrackingIsOffWithoutAnEnabledService) {
    for (const auto* body : {"{}", R"({"services":{"geo_regions":false,"beacon":false}})",
                             R"({"services":{"rich_inbox":true},"configs":{"geo_regions":{"geo_mode":1}}})"}) {
        start(body);
        EXPECT_FALSE(service->isLocationTrackingEnabled()) << body;
    }
    EXPECT_EQ(debugLines(kSwitchedOff), 3);
    EXPECT_EQ(log().count(kMode1Text, VLLogLevel::Error), 0);
    EXPECT_FALSE(manager().allowsBackgroundLocationUpdates());
}

TEST_F(VLLocationServiceTest, SwitchingOffKeepsMonitoredRegions) {
    start(kGeo);
    manager().startMonitoringForRegion(circle);
    service->configureLocationUpdates(false);
    phone().settle();
    EXPECT_FALSE(manager().isMonitoringSignificantLocationChanges());
    EXPECT_TRUE(manager().monitoredRegion("circle"));
    EXPECT_EQ(update(true, true), true);
    EXPECT_FALSE(manager().isMonitoringSignificantLocationChanges());
}

TEST_F(VLLocationServiceTest, SwitchingOffAtOnceStartsNothing) {
    configure(kGeo);
    service->configureLocationUpdates(true);
    service->configureLocationUpdates(false);
    phone().settle();
    EXPECT_EQ(significantChanges, std::vector<bool>{false});
    EXPECT_EQ(debugLines(kSwitchedOn), 0);
}

TEST_F(VLLocationServiceTest, RegionsNeedServicesAuthorisationAndCapability) {
    configure(kGeo);
    for (const auto& [status, isCapable] : std::vector<std::pair<Status, bool>>{{Status::NotDetermined, true},
                                                                                {Status::Restricted, false},
                                                                                {Status::Denied, false},
                                                                                {Status::AuthorizedAlways, true},
                                                                                {Status::AuthorizedWhenInUse, true}}) {
        manager().setAuthorizationStatus(status);
        phone().settle();
        settings->setOldLocation(Dictionary{{"Latitude", 1}, {"Longitude", 2}});
        EXPECT_EQ(capabilities(), std::pair(isCapable, false)) << static_cast<int>(status);
        // Cleared if regions cannot be monitored.
        EXPECT_EQ(settings->oldLocation().has_value(), isCapable) << static_cast<int>(status);
    }
    for (const auto& lacking : {SimulatedLocationManager::Capabilities{.locationServicesEnabled = false},
                                SimulatedLocationManager::Capabilities{.regionMonitoring = false}}) {
        manager().setCapabilities(lacking);
        settings->setOldLocation(Dictionary{{"Latitude", 1}, {"Longitude", 2}});
        EXPECT_FALSE(service->checkGeoRegionMonitoringCapability());
        EXPECT_EQ(settings->oldLocation(), std::nullopt);
        EXPECT_FALSE(service->checkGeoRegionMonitoringCapability());
    }
}

TEST_F(VLLocationServiceTest, DisabledGeoSkipsTheCapabilityCheck) {
    configure(kBeacons);
    manager().setCapabilities({.locationServicesEnabled = false});
    settings->setOldLocation(Dictionary{{"Latitude", 1}, {"Longitude", 2}});
    EXPECT_EQ(capabilities(), std::pair(false, true));
    EXPECT_TRUE(settings->oldLocation());
}

TEST_F(VLLocationServiceTest, BeaconsNeedMonitoringAndRanging) {
    configure(kBoth);
    EXPECT_EQ(capabilities(), std::pair(true, true));
    manager().setCapabilities({.beaconMonitoring = false});
    EXPECT_EQ(capabilities(), std::pair(true, false));
    EXPECT_EQ(log().count("CLBeaconRegion monitoring is not available for this device.", VLLogLevel::Info), 1);
    EXPECT_TRUE(log().linesContaining("Beacon ranging").empty());
    manager().setCapabilities({.ranging = false});
    EXPECT_EQ(capabilities(), std::pair(true, false));
    EXPECT_EQ(log().count("Beacon ranging is not supported on this device.", VLLogLevel::Info), 1);
    configure(kGeo);
    EXPECT_EQ(capabilities(), std::pair(true, false));
    EXPECT_EQ(log().linesContaining("Beacon ranging").size(), 1U);
}

TEST_F(VLLocationServiceWithoutBackgroundModeTest, LogsWhyRangingIsDisabled) {
    start(kBoth);
    EXPECT_FALSE(manager().allowsBackgroundLocationUpdates());
    EXPECT_EQ(log().count(kNoBackgroundModeText, VLLogLevel::Error), 1);
    EXPECT_FALSE(service->rangingCapable());
    EXPECT_EQ(significantChanges, std::vector<bool>{true});  // not needed for geofences
}

TEST_F(VLLocationServiceWithoutUsageKeyTest, NothingStartsAndHandlerIsNeverCalled) {
    start(kBoth);
    EXPECT_TRUE(service->isLocationTrackingEnabled());
    EXPECT_EQ(log().count(kNoUsageKeyText, VLLogLevel::Error), 1);
    EXPECT_EQ(update(true, true), std::nullopt);
    phone().settle();
    EXPECT_EQ(log().count(kNoUsageKeyText, VLLogLevel::Error), 2);
    EXPECT_TRUE(significantChanges.empty());
    EXPECT_EQ(debugLines(kSwitchedOn), 0);
}

TEST_F(VLLocationServiceWithoutUsageKeyTest, CapabilityIsCheckedFirst) {
    start(kGeo);
    log().clear();
    manager().setCapabilities({.regionMonitoring = false});
    EXPECT_EQ(update(true, true), true);
    EXPECT_EQ(log().count(kNoUsageKeyText, VLLogLevel::Error), 0);
}

TEST_F(VLLocationServiceTest, UpdateWithoutTrackingOrCapabilitySucceeds) {
    EXPECT_EQ(update(true, true), true);
    start(kGeo);
    log().clear();
    significantChanges.clear();
    manager().setAuthorizationStatus(Status::Denied);
    phone().settle();
    EXPECT_EQ(update(true, true), true);
    EXPECT_TRUE(significantChanges.empty());
    EXPECT_EQ(debugLines(kSwitchedOn), 0);
    service->configUpdateWithBeacons(true, true, nullptr);
}

TEST_F(VLLocationServiceTest, UpdateStartsTheRequestedFeatures) {
    start(kBoth);
    significantChanges.clear();
    EXPECT_EQ(update(false, false), true);
    EXPECT_TRUE(significantChanges.empty());
    EXPECT_EQ(update(false, true), true);
    EXPECT_EQ(significantChanges, std::vector<bool>{true});
    EXPECT_EQ(update(true, false), true);
    EXPECT_EQ(significantChanges, std::vector<bool>{true});
    EXPECT_EQ(debugLines(kSwitchedOn), 4);
    service->configUpdateWithBeacons(true, true, nullptr);
    EXPECT_EQ(significantChanges, (std::vector<bool>{true, true}));
}

TEST_F(VLLocationServiceTest, BeaconsAloneStartNoSignificantChanges) {
    start(kBeacons);
    EXPECT_TRUE(service->isLocationTrackingEnabled());
    EXPECT_TRUE(significantChanges.empty());
    ASSERT_EQ(manager().monitoredRegions().size(), 1U);
    EXPECT_EQ(manager().monitoredRegions()[0]->identifier(), kUUID + "_1_2");
}

TEST_F(VLLocationServiceTest, PassesTheFlagOfTheBeaconServiceOn) {
    start(kBeacons);
    EXPECT_EQ(update(true, false), true);
    start(R"({"services":{"beacon":true}})");  // no configuration: flag 2 counts as success
    EXPECT_EQ(update(true, false), true);
}

TEST_F(VLLocationServiceTest, BackgroundUpdatesStaleBeaconsOnly) {
    application().setApplicationState(UIApplicationState::Background);
    start(kBeacons);  // never updated, so stale
    EXPECT_EQ(manager().monitoredRegions().size(), 1U);
    manager().stopMonitoringForRegion(manager().monitoredRegions()[0]);
    service->configureLocationUpdates(true);
    phone().settle();
    EXPECT_TRUE(manager().monitoredRegions().empty());
    application().setApplicationState(UIApplicationState::Active);
    service->configureLocationUpdates(true);
    phone().settle();
    EXPECT_EQ(manager().monitoredRegions().size(), 1U);
}

TEST_F(VLLocationServiceTest, OnlyGrantedAuthorisationConfiguresTracking) {
    configure(kGeo);
    for (const auto status : {Status::NotDetermined, Status::Restricted, Status::Denied}) {
        manager().setAuthorizationStatus(status);
        phone().settle();
        EXPECT_FALSE(service->isLocationTrackingEnabled()) << static_cast<int>(status);
    }
    EXPECT_EQ(debugLines(kSwitchedOff), 0);
    for (const auto status : {Status::AuthorizedAlways, Status::AuthorizedWhenInUse}) {
        significantChanges.clear();
        manager().setAuthorizationStatus(status);
        phone().settle();
        EXPECT_TRUE(service->isLocationTrackingEnabled());
        EXPECT_EQ(significantChanges, std::vector<bool>{true}) << static_cast<int>(status);
    }
    manager().setAuthorizationStatus(Status::Denied);
    phone().settle();
    EXPECT_TRUE(service->isLocationTrackingEnabled());
}

TEST_F(VLLocationServiceTest, LogsStates) {
    for (const auto& region : {circle, std::static_pointer_cast<CLRegion>(shop)}) {
        for (const auto event : {RegionEvent::Inside, RegionEvent::Outside, RegionEvent::Unknown})
            happens(event, region);
        EXPECT_EQ(debugLines("## Inside of Region - " + region->identifier()), 1);
        EXPECT_EQ(debugLines("## Outside of Region - " + region->identifier()), 1);
        EXPECT_EQ(debugLines("## Unknown state Region - " + region->identifier()), 1);
    }
    // Only beacon regions reach the beacon service.
    EXPECT_EQ(log().linesContaining("Inside beacon region but did not record an enter event:").size(), 1U);
}

TEST_F(VLLocationServiceTest, LogsStartAndFailureOfMonitoring) {
    manager().startMonitoringForRegion(circle);
    happens(RegionEvent::Failed, circle);
    EXPECT_EQ(log().count("Started monitoring region: circle", VLLogLevel::Info), 1);
    EXPECT_EQ(log().count("Error occurred: Error Domain=kCLErrorDomain Code=5 \"The region cannot be monitored\"\n"
                          "when monitoring region: " +
                              circle->description(),
                          VLLogLevel::Warn),
              1);
}

TEST_F(VLLocationServiceTest, EnteringAGeofenceOpensABackgroundTask) {
    happens(RegionEvent::Enter, circle);
    EXPECT_EQ(debugLines("************** INSIDE GEOFENCE - ENTERED REGION circle *****************"), 1);
    EXPECT_TRUE(log().linesContaining("DidEnterRegion called for region").empty());
    EXPECT_EQ(application().backgroundTasks().size(), 1U);
    happens(RegionEvent::Exit, circle);
    EXPECT_EQ(debugLines("************** OUTSIDE GEOFENCE - EXITED REGION  circle *****************"), 1);
    EXPECT_EQ(application().backgroundTasks().size(), 1U);  // ended by its expiry only
    application().expireBackgroundTasks();
    EXPECT_TRUE(application().backgroundTasks().empty());
}

TEST_F(VLLocationServiceTest, ExpiryEndsTheTaskOfEachEnter) {
    happens(RegionEvent::Enter, circle);
    happens(RegionEvent::Enter, circle);
    EXPECT_EQ(application().backgroundTasks().size(), 2U);
    application().expireBackgroundTasks();
    EXPECT_TRUE(application().backgroundTasks().empty());
    happens(RegionEvent::Enter, circle);
    service.reset();
    components.reset();
    application().expireBackgroundTasks();
    EXPECT_TRUE(application().backgroundTasks().empty());
}

TEST_F(VLLocationServiceTest, BeaconRegionEventsReachTheBeaconService) {
    happens(RegionEvent::Enter, shop);
    EXPECT_EQ(debugLines("************** INSIDE BEACON DELEGATE- ENTERED REGION shop *****************"), 1);
    EXPECT_EQ(log().linesContaining("DidEnterRegion called for region:").size(), 1U);
    EXPECT_EQ(application().backgroundTasks().size(), 1U);
    EXPECT_EQ(manager().rangedRegions().size(), 1U);
    happens(RegionEvent::Exit, shop);
    EXPECT_EQ(debugLines("************** OUTSIDE BEACON DELEGATE - EXITED REGION shop *****************"), 1);
    EXPECT_EQ(log().linesContaining("DidExitRegion called for region:").size(), 1U);
    EXPECT_TRUE(manager().rangedRegions().empty());
    EXPECT_TRUE(log().linesContaining("GEOFENCE").empty());
}

TEST_F(VLLocationServiceTest, LogsRangingWithTheRemainingTime) {
    manager().deliverRanging({{kUUID, 1, 2, CLProximity::Near, 1.5}}, shop);
    application().setBackgroundTimeRemaining(12.5);
    manager().deliverRanging({}, shop);
    phone().settle();
    EXPECT_EQ(debugLines("Inside Ranging.  Time remaining:12.5"), 2);
    application().setBackgroundTimeRemaining(180);
    manager().deliverRanging({}, shop);
    phone().settle();
    EXPECT_EQ(debugLines("Inside Ranging.  Time remaining:180"), 1);
    EXPECT_EQ(log().linesContaining("Beacons Found: ").size(), 3U);
}

TEST_F(VLLocationServiceTest, LocationsReachTheGeoService) {
    manager().deliverLocations({{{59.9, 10.7}, 50, phone().now()}, {{59.91, 10.75}, 5, phone().now()}});
    phone().settle();
    EXPECT_NE(session().lastRequest("/geo/regions").request.URL.absoluteString().find("latitude=59.91"),
              std::string::npos);
}

TEST_F(VLLocationServiceTest, DestroyedServiceReceivesNothing) {
    configure(kGeo);
    service->configureLocationUpdates(true);
    service.reset();
    components.reset();
    manager().deliverLocations({{{59.9, 10.7}, 50, phone().now()}});
    phone().settle();
    EXPECT_TRUE(session().requests("/geo/regions").empty());
    EXPECT_TRUE(significantChanges.empty());
}

TEST_F(VLLocationServiceTest, NoRangingMeansNoBeaconRegions) {
    const std::string both =
        R"({"services":{"geo_regions":true,"beacon":true},"configs":{"beacon":{"beacon_data":[{"type":"data",)"
        R"("beacon_type":"ibeacon","uuid":"B9407F30-F5F8-466E-AFF9-25556B57FE6D","major":1,"minor":2}]}}})";
    manager().setCapabilities({.ranging = false});
    start(both);
    EXPECT_EQ(update(true, false), true);
    EXPECT_EQ(significantChanges, std::vector<bool>{true});
    EXPECT_TRUE(manager().monitoredRegions().empty());
    manager().setCapabilities({});
    EXPECT_EQ(update(true, false), true);
    EXPECT_EQ(manager().monitoredRegions().size(), 1U);
}

TEST_F(VLLocationServiceTest, Mode1WithBeaconsFetchesRegions) {
    const std::string mode1 =
        R"({"services":{"geo_regions":true,"beacon":true},"configs":{"geo_regions":{"geo_mode":1}}})";
    manager().setCapabilities({.regionMonitoring = false});
    start(mode1);
    EXPECT_TRUE(service->isLocationTrackingEnabled());
    EXPECT_TRUE(significantChanges.empty());
    manager().setCapabilities({});
    start(mode1);
    EXPECT_EQ(significantChanges, std::vector<bool>{true});
    manager().deliverLocations({{{59.9, 10.7}, 5, phone().now()}});
    phone().settle();
    EXPECT_EQ(session().requests("/geo/regions").size(), 1U);
}

TEST_F(VLLocationServiceTest, PropertiesReturnTheComponents) {
    EXPECT_EQ(service->settings(), settings);
    EXPECT_EQ(service->configService(), components->getComponent<VLConfigService>());
    EXPECT_EQ(service->beacons(), components->getComponent<VLBeaconService>());
    EXPECT_EQ(service->geoService(), components->getComponent<VLGeoService>());
    EXPECT_EQ(service->locationManager().get(), &manager());
    EXPECT_TRUE(service->locationHelper()->isAppEnabledForBackgroundLocation());
}

TEST_F(VLLocationServiceTest, WrittenPropertiesTakeEffect) {
    configure(kGeo);
    const auto other = std::make_shared<VLSettings>(phone().device());
    service->setSettings(other);
    other->setOldLocation(Dictionary{{"Latitude", 1}, {"Longitude", 2}});
    const auto noKeys = std::make_shared<NSBundle>(Dictionary{});
    service->setLocationHelper(std::make_shared<VLLocationHelper>(noKeys, phone().locationManager()));
    service->setIsLocationTrackingEnabled(true);
    EXPECT_TRUE(service->isLocationTrackingEnabled());
    EXPECT_EQ(update(false, true), std::nullopt);
    EXPECT_EQ(log().count(kNoUsageKeyText, VLLogLevel::Error), 1);

    const auto fake = std::make_shared<FakeLocationManager>();
    fake->setStatus(Status::Denied);
    service->setLocationManager(fake);
    EXPECT_FALSE(service->checkGeoRegionMonitoringCapability());
    EXPECT_FALSE(other->oldLocation());

    const auto geo = components->getComponent<VLGeoService>();
    service->setGeoService(
        std::make_shared<VLGeoService>(phone().locationManager(), settings, nullptr, nullptr, nullptr));
    service->setBeacons(std::make_shared<VLBeaconService>(nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_NE(service->geoService(), geo);
    service->setConfigService(std::weak_ptr<VLConfigService>());
    EXPECT_EQ(service->configService(), nullptr);
    service->startWithConfig();
    EXPECT_FALSE(service->isLocationTrackingEnabled());
}

TEST_F(VLLocationServiceTest, HoldsSettingsAndConfigurationWeakly) {
    auto own = std::make_shared<VLSettings>(phone().device());
    auto config = std::make_shared<VLConfigService>(own, nullptr, nullptr);
    service->setSettings(own);
    service->setConfigService(config);
    own.reset();
    config.reset();
    EXPECT_EQ(service->configService(), nullptr);
    EXPECT_EQ(service->settings(), nullptr);
    EXPECT_EQ(capabilities(), std::pair(false, false));
    EXPECT_TRUE(service->checkGeoRegionMonitoringCapability());
    manager().setAuthorizationStatus(Status::AuthorizedAlways);
    phone().settle();
    EXPECT_TRUE(service->isLocationTrackingEnabled());
}

}  // namespace

}  // namespace vorlane

#include "Core/Startup/VLBootstrap.h"

#include <gtest/gtest.h>

#include "Beacons/VLBeaconService.h"
#include "Core/Base/VLSettings.h"
#include "Core/Startup/VLLifeCycleManager.h"
#include "Geo/VLGeoService.h"
#include "Geo/VLLocationService.h"
#include "Network/VLPayloadBuilder.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Notifications/VLInterstitialService.h"
#include "Notifications/VLPermissionService.h"
#include "Notifications/VLRemoteNotificationService.h"
#include "Platform/NSBundle.h"
#include "Platform/NSException.h"
#include "Platform/NSFileManager.h"
#include "Platform/NSNotificationCenter.h"
#include "Platform/NSURLSession.h"
#include "Platform/UIApplication.h"
#include "Platform/UIDevice.h"
#include "Public/VLURLsProduction.h"
#include "Tests/Support/SimulatedPhoneTest.h"
#include "Tracking/VLConfigService.h"
#include "Tracking/VLEventService.h"
#include "Tracking/VLSessionService.h"
#include "Tracking/VLTagsService.h"

namespace vorlane {

namespace {

struct Number {
    int value = 0;
};

struct Greeter {
    virtual ~Greeter() = default;
    virtual std::string greeting() const = 0;
};

struct PoliteGreeter : Greeter {
    std::string greeting() const override { return "Good day"; }
};

class VLBootstrapTest : public SimulatedPhoneTest {
protected:
    std::shared_ptr<VLBootstrap> bootstrap = VLBootstrap::bootstrapWithURLs(std::make_shared<VLURLsProduction>());
};

TEST_F(VLBootstrapTest, RequestsForOneClassReturnOneObject) {
    EXPECT_EQ(bootstrap->getComponent<VLSettings>(), bootstrap->getComponent<VLSettings>());
}

TEST_F(VLBootstrapTest, CreateComponentReturnsANewObjectEachTime) {
    const auto shared = bootstrap->getComponent<VLTagsService>();
    const auto first = bootstrap->createComponent<VLTagsService>();
    const auto second = bootstrap->createComponent<VLTagsService>();
    EXPECT_NE(first, second);
    EXPECT_NE(first, shared);
    EXPECT_EQ(bootstrap->getComponent<VLTagsService>(), shared);
}

TEST_F(VLBootstrapTest, AnAddedInstanceReplacesTheFactory) {
    const auto own = bootstrap->createComponent<VLSettings>();
    bootstrap->addComponentInstance<VLSettings>(own);
    EXPECT_EQ(bootstrap->getComponent<VLSettings>(), own);
}

TEST_F(VLBootstrapTest, AnInstanceIsStoredUnderItsMostDerivedClass) {
    const std::shared_ptr<Greeter> greeter = std::make_shared<PoliteGreeter>();
    bootstrap->addComponent(greeter);
    EXPECT_EQ(bootstrap->getComponent<PoliteGreeter>(), greeter);
    EXPECT_THROW(bootstrap->getComponent<Greeter>(), NSException);

    const auto number = std::make_shared<Number>();
    bootstrap->addComponent(number);
    EXPECT_EQ(bootstrap->getComponent<Number>(), number);
    bootstrap->addComponent(std::shared_ptr<Number>());
    EXPECT_EQ(bootstrap->getComponent<Number>(), number);
}

TEST_F(VLBootstrapTest, ANullTypeReturnsNull) { EXPECT_EQ(bootstrap->getComponent(nullptr), nullptr); }

TEST_F(VLBootstrapTest, AClassIsFoundByTypeAndByName) {
    const std::shared_ptr<void> settings = bootstrap->getComponent<VLSettings>();
    EXPECT_EQ(bootstrap->getComponent(&typeid(VLSettings)), settings);
    EXPECT_EQ(bootstrap->getComponentForString("VLSettings"), settings);
}

TEST_F(VLBootstrapTest, RegistrationMakesNoInstance) {
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(documentsPath("VLLibSettings.plist")));
    bootstrap->getComponent<VLSettings>();
    EXPECT_TRUE(NSFileManager::fileExistsAtPath(documentsPath("VLLibSettings.plist")));
}

TEST_F(VLBootstrapTest, TheLifeCycleManagerMakesEveryServiceItNeeds) {
    int made = 0;
    const auto settings = bootstrap->createComponent<VLSettings>();
    bootstrap->addComponent<VLSettings>([&] {
        ++made;
        return settings;
    });
    bootstrap->getComponent<VLLifeCycleManager>();
    EXPECT_EQ(made, 1);

    // An existing instance is returned without a call of its factory.
    const auto mustNotRun = [](auto* type) {
        using T = std::remove_pointer_t<decltype(type)>;
        return [] {
            ADD_FAILURE() << VLBootstrap::typeName<T>();
            return std::shared_ptr<T>();
        };
    };
    bootstrap->addComponent<VLURLBuilder>(mustNotRun(static_cast<VLURLBuilder*>(nullptr)));
    bootstrap->addComponent<VLPayloadBuilder>(mustNotRun(static_cast<VLPayloadBuilder*>(nullptr)));
    bootstrap->addComponent<VLURLSession>(mustNotRun(static_cast<VLURLSession*>(nullptr)));
    bootstrap->addComponent<VLSessionService>(mustNotRun(static_cast<VLSessionService*>(nullptr)));
    bootstrap->addComponent<VLConfigService>(mustNotRun(static_cast<VLConfigService*>(nullptr)));
    bootstrap->addComponent<VLPermissionService>(mustNotRun(static_cast<VLPermissionService*>(nullptr)));
    bootstrap->addComponent<VLInterstitialService>(mustNotRun(static_cast<VLInterstitialService*>(nullptr)));
    bootstrap->addComponent<VLRemoteNotificationService>(
        mustNotRun(static_cast<VLRemoteNotificationService*>(nullptr)));
    bootstrap->addComponent<VLLocationService>(mustNotRun(static_cast<VLLocationService*>(nullptr)));
    bootstrap->addComponent<VLGeoService>(mustNotRun(static_cast<VLGeoService*>(nullptr)));
    bootstrap->addComponent<VLBeaconService>(mustNotRun(static_cast<VLBeaconService*>(nullptr)));
    EXPECT_EQ(bootstrap->getComponent<VLSettings>(), settings);
    EXPECT_TRUE(bootstrap->getComponent<VLURLBuilder>());
    EXPECT_TRUE(bootstrap->getComponent<VLPayloadBuilder>());
    EXPECT_TRUE(bootstrap->getComponent<VLURLSession>());
    EXPECT_TRUE(bootstrap->getComponent<VLSessionService>());
    EXPECT_TRUE(bootstrap->getComponent<VLConfigService>());
    EXPECT_TRUE(bootstrap->getComponent<VLPermissionService>());
    EXPECT_TRUE(bootstrap->getComponent<VLInterstitialService>());
    EXPECT_TRUE(bootstrap->getComponent<VLRemoteNotificationService>());
    EXPECT_TRUE(bootstrap->getComponent<VLLocationService>());
    EXPECT_TRUE(bootstrap->getComponent<VLGeoService>());
    EXPECT_TRUE(bootstrap->getComponent<VLBeaconService>());
}

TEST_F(VLBootstrapTest, TypesAreRegisteredInTheDesignedOrder) {
    const std::vector<std::string> expected{"NSURLSession",
                                            "UIDevice",
                                            "UIApplication",
                                            "NSNotificationCenter",
                                            "NSBundle",
                                            "UNUserNotificationCenter",
                                            "CLLocationManager",
                                            "VLSettings",
                                            "VLURLBuilder",
                                            "VLPayloadBuilder",
                                            "VLURLSession",
                                            "VLEventService",
                                            "VLConfigService",
                                            "VLInterstitialService",
                                            "VLNotificationHelper",
                                            "VLPermissionService",
                                            "VLGeoRegionContent",
                                            "VLGeoService",
                                            "VLRemoteNotificationService",
                                            "VLTagsService",
                                            "VLBeaconsConfig",
                                            "VLBeaconRegionSessions",
                                            "VLBeaconService",
                                            "VLLocationService",
                                            "VLSessionService",
                                            "VLLifeCycleManager",
                                            "VLLocalNotificationService",
                                            "VLInboxService",
                                            "VLBackgroundRefreshHelper",
                                            "VLAuthorisationHelper",
                                            "VLUserNotificationCentre",
                                            "VLURLActions"};
    EXPECT_EQ(bootstrap->registeredNames(), expected);
    bootstrap->addComponent<VLSettings>([] { return std::shared_ptr<VLSettings>(); });
    EXPECT_EQ(bootstrap->registeredNames(), expected);
}

TEST_F(VLBootstrapTest, EveryRegisteredTypeCanBeMade) {
    for (const auto& name : bootstrap->registeredNames()) EXPECT_TRUE(bootstrap->getComponentForString(name)) << name;
}

/// A phone that records the time-out of each URL session.
class WatchedPhone : public SimulatedPhone {
public:
    std::shared_ptr<NSURLSession> makeURLSession(const NSURLSessionConfiguration& configuration) override {
        timeouts.push_back(configuration.timeoutIntervalForRequest);
        return SimulatedPhone::makeURLSession(configuration);
    }

    std::vector<TimeInterval> timeouts;
};

TEST(VLIOSComponentsTest, TheURLSessionTimesOutAfter10Seconds) {
    const auto phone = std::make_shared<WatchedPhone>();
    Platform::install(phone);
    VLBootstrap::bootstrapWithURLs(std::make_shared<VLURLsProduction>())->getComponent<NSURLSession>();
    EXPECT_EQ(phone->timeouts, std::vector<TimeInterval>{10.0});
    Platform::install(nullptr);
}

/// A phone of the platform generation without a user notification centre.
class VLBootstrapOldPhoneTest : public SimulatedPhoneTest {
protected:
    VLBootstrapOldPhoneTest() : SimulatedPhoneTest({.systemVersion = 9.3}) {}
};

TEST_F(VLBootstrapOldPhoneTest, TheUserNotificationCenterIsNotRegistered) {
    const auto bootstrap = VLBootstrap::bootstrapWithURLs(std::make_shared<VLURLsProduction>());
    EXPECT_THROW(bootstrap->getComponentForString("UNUserNotificationCenter"), NSException);
    EXPECT_EQ(bootstrap->getComponentForString("VLAuthorisationHelper"), nullptr);
    EXPECT_TRUE(bootstrap->getComponentForString("VLUserNotificationCentre"));
}

TEST_F(VLBootstrapTest, PlatformObjectsComeFromThePlatform) {
    EXPECT_EQ(bootstrap->getComponent<UIApplication>(), phone().application());
    EXPECT_EQ(bootstrap->getComponent<UIDevice>(), phone().device());
    EXPECT_EQ(bootstrap->getComponent<NSBundle>(), phone().mainBundle());
    EXPECT_EQ(bootstrap->getComponent<NSNotificationCenter>(), phone().notificationCenter());
    EXPECT_TRUE(bootstrap->getComponent<NSURLSession>());
}

TEST_F(VLBootstrapTest, AProtocolIsRegisteredLikeAClass) {
    bootstrap->addComponent<Greeter>([] { return std::make_shared<PoliteGreeter>(); });
    EXPECT_EQ(bootstrap->getComponent<Greeter>()->greeting(), "Good day");
    EXPECT_EQ(bootstrap->getComponent<Greeter>(), bootstrap->getComponent<Greeter>());
}

TEST_F(VLBootstrapTest, ALaterFactoryKeepsAnExistingInstance) {
    const auto settings = bootstrap->getComponent<VLSettings>();
    bootstrap->addComponent<VLSettings>([] { return std::shared_ptr<VLSettings>(); });
    EXPECT_EQ(bootstrap->getComponent<VLSettings>(), settings);
}

TEST_F(VLBootstrapTest, OverrideComponentWithBlockCallsTheFactoryAtOnce) {
    int calls = 0;
    bootstrap->overrideComponentWithBlock<Greeter>([&] {
        ++calls;
        return std::make_shared<PoliteGreeter>();
    });
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(bootstrap->getComponent<Greeter>());
    EXPECT_EQ(calls, 1);
}

TEST_F(VLBootstrapTest, ANullResultIsNotStored) {
    int calls = 0;
    bootstrap->addComponent<Greeter>([&] {
        ++calls;
        return std::shared_ptr<Greeter>();
    });
    EXPECT_EQ(bootstrap->getComponent<Greeter>(), nullptr);
    EXPECT_EQ(bootstrap->getComponent<Greeter>(), nullptr);
    EXPECT_EQ(calls, 2);
}

TEST_F(VLBootstrapTest, AnUnregisteredTypeThrows) {
    EXPECT_THROW(bootstrap->getComponentForString("NoSuchType"), NSException);
}

TEST_F(VLBootstrapTest, OverridingWithNullIsIgnored) {
    bootstrap->addComponent<Greeter>([] { return std::make_shared<PoliteGreeter>(); });
    bootstrap->overrideComponentWithBlock<Greeter>([] { return std::shared_ptr<Greeter>(); });
    EXPECT_TRUE(bootstrap->getComponent<Greeter>());
}

}  // namespace

}  // namespace vorlane

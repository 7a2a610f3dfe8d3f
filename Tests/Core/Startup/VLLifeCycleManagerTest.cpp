#include "Core/Startup/VLLifeCycleManager.h"

#include <gtest/gtest.h>

#include "Platform/NSException.h"
#include "Platform/NSFileManager.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Platform/UILocalNotification.h"
#include "Public/Vorlane.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

const std::string kKey = "0123456789abcdef0123456789abcdef";
const std::string kConfigPath = "/config/application/ios/";
const std::string kSessionStartPath = "/0.8/session";
const std::string kSessionEndPath = "/0.8/session/end";

VLSDKOptions optionsWithKey(const std::optional<std::string>& key) {
    auto options = VLSDKOptions::developmentOptions();
    options.setAppKey(key);
    return options;
}

/// The reason of the exception for a missing or invalid key.
std::string invalidKeyText(const std::string& foundKey) {
    return "The Vorlane Project Key is missing or invalid - found key \"" + foundKey + "\"." + std::string(34, ' ') +
           "Check that the 32 character Project Key is present in the Info.plist with key" + std::string(33, ' ') +
           "\"VL_App_Key\", or was set in the VLSDKOptions object at SDK initialisation.";
}

class VLLifeCycleManagerTest : public SimulatedPhoneTest {
protected:
    explicit VLLifeCycleManagerTest(SimulatedPhone::Options options = {}) : SimulatedPhoneTest(std::move(options)) {}

    UIApplication& application() { return phone().simulatedApplication(); }

    void launch(const VLSDKOptions& options = optionsWithKey(kKey),
                const std::optional<Dictionary>& launchOptions = std::nullopt) {
        Vorlane::initialiseSDKWithApplication(phone().application(), launchOptions, options);
    }

    void expectRefused(const VLSDKOptions& options, const std::string& foundKey) {
        try {
            launch(options);
            ADD_FAILURE() << "was accepted";
        } catch (const NSException& exception) {
            EXPECT_EQ(exception.name(), "Missing / Invalid Project Key");
            EXPECT_EQ(exception.reason(), invalidKeyText(foundKey));
        }
        EXPECT_EQ(log().count(invalidKeyText(foundKey), VLLogLevel::Error), 1);
    }

    std::size_t sessionStarts() { return session().requests(kSessionStartPath).size() - sessionEnds(); }
    std::size_t sessionEnds() { return session().requests(kSessionEndPath).size(); }
};

TEST_F(VLLifeCycleManagerTest, AKeyOf31CharactersIsRefused) {
    expectRefused(optionsWithKey(kKey.substr(1)), kKey.substr(1));
}

TEST_F(VLLifeCycleManagerTest, AKeyOf33CharactersIsRefused) { expectRefused(optionsWithKey(kKey + "x"), kKey + "x"); }

TEST_F(VLLifeCycleManagerTest, AnAbsentKeyIsRefused) { expectRefused(optionsWithKey(std::nullopt), "(null)"); }

TEST_F(VLLifeCycleManagerTest, AnEmptyKeyInTheOptionsIsRefused) { expectRefused(optionsWithKey(""), ""); }

TEST_F(VLLifeCycleManagerTest, AKeyOfAny32CharactersIsAccepted) {
    std::string key;
    for (int i = 0; i < 16; ++i) key += "/\u00e9";
    launch(optionsWithKey(key));
    EXPECT_EQ(Vorlane::appKey(), key);
}

TEST_F(VLLifeCycleManagerTest, StartUpRemovesAbandonedTemporaryFiles) {
    const auto abandoned = phone().documentsFolder() + "/VLLibSettings.plist.vorlane-aB3xYz";
    ASSERT_TRUE(NSFileManager::writeToFile({1, 2, 3}, abandoned));
    phone().setClock(4e9);
    launch();
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(abandoned));
}

TEST_F(VLLifeCycleManagerTest, StartUpKeepsTheApplicationsOwnFiles) {
    const std::vector<std::string> own{"notes.plist.backup", "VLLibSettings.plist.backup", "shop.plist.010126"};
    for (const auto& name : own) ASSERT_TRUE(NSFileManager::writeToFile({1}, documentsPath(name)));
    phone().setClock(4e9);
    launch();
    for (const auto& name : own) EXPECT_TRUE(NSFileManager::fileExistsAtPath(documentsPath(name))) << name;
}

TEST_F(VLLifeCycleManagerTest, StartUpKeepsRecentTemporaryFiles) {
    const auto underWay = phone().documentsFolder() + "/VLLibSettings.plist.vorlane-aB3xYz";
    ASSERT_TRUE(NSFileManager::writeToFile({1, 2, 3}, underWay));
    phone().setClock(NSFileManager::creationDateOfItemAtPath(underWay).value() + 3000);
    launch();
    EXPECT_TRUE(NSFileManager::fileExistsAtPath(underWay));
}

TEST_F(VLLifeCycleManagerTest, ARefusedStartUpSetsOnlyTheLogLevel) {
    Vorlane::setPhash("kept");
    auto options = optionsWithKey("short");
    options.setLogLevel(VLLogLevel::Error);
    EXPECT_THROW(launch(options), NSException);
    phone().settle();
    EXPECT_EQ(VLLog::sharedInstance().logLevel(), VLLogLevel::Error);
    EXPECT_EQ(Vorlane::appKey(), std::nullopt);
    EXPECT_EQ(Vorlane::phash(), "kept");
    EXPECT_EQ(phone().simulatedApplication().remoteNotificationRegistrations(), 0);
    application().didBecomeActive();
    EXPECT_TRUE(session().requests().empty());
}

class VLLifeCycleManagerInfoKeyTest : public VLLifeCycleManagerTest {
protected:
    VLLifeCycleManagerInfoKeyTest()
        : VLLifeCycleManagerTest({.infoDictionary = {{"VL_App_Key", "info-key-info-key-info-key-info-"}}}) {}
};

TEST_F(VLLifeCycleManagerInfoKeyTest, WithoutAKeyInTheOptionsTheInfoKeyIsUsed) {
    launch(optionsWithKey(std::nullopt));
    EXPECT_EQ(Vorlane::appKey(), "info-key-info-key-info-key-info-");
}

TEST_F(VLLifeCycleManagerInfoKeyTest, TheOptionsKeyWinsOverTheInfoKey) {
    launch();
    EXPECT_EQ(Vorlane::appKey(), kKey);
}

TEST_F(VLLifeCycleManagerInfoKeyTest, AnInvalidOptionsKeyIsNotReplacedByTheInfoKey) {
    expectRefused(optionsWithKey("short"), "short");
}

class VLLifeCycleManagerShortInfoKeyTest : public VLLifeCycleManagerTest {
protected:
    VLLifeCycleManagerShortInfoKeyTest()
        : VLLifeCycleManagerTest({.infoDictionary = {{"VL_App_Key", "info-key-info-key-info-key-info"}}}) {}
};

TEST_F(VLLifeCycleManagerShortInfoKeyTest, AnInfoKeyOf31CharactersIsRefused) {
    expectRefused(optionsWithKey(std::nullopt), "info-key-info-key-info-key-info");
}

class VLLifeCycleManagerLongInfoKeyTest : public VLLifeCycleManagerTest {
protected:
    VLLifeCycleManagerLongInfoKeyTest()
        : VLLifeCycleManagerTest({.infoDictionary = {{"VL_App_Key", "info-key-info-key-info-key-info-k"}}}) {}
};

TEST_F(VLLifeCycleManagerLongInfoKeyTest, AnInfoKeyOf33CharactersIsRefused) {
    expectRefused(optionsWithKey(std::nullopt), "info-key-info-key-info-key-info-k");
}

TEST_F(VLLifeCycleManagerTest, StartUpAppliesTheLogLevel0) {
    auto options = VLSDKOptions();
    options.setAppKey(kKey);
    launch(options);
    EXPECT_EQ(VLLog::sharedInstance().logLevel(), VLLogLevel::Off);
    EXPECT_TRUE(log().lines().empty());
}

class VLLifeCycleManagerNumberInfoKeyTest : public VLLifeCycleManagerTest {
protected:
    VLLifeCycleManagerNumberInfoKeyTest() : VLLifeCycleManagerTest({.infoDictionary = {{"VL_App_Key", 12345}}}) {}
};

TEST_F(VLLifeCycleManagerNumberInfoKeyTest, AnInfoKeyThatIsNoStringIsRefused) {
    expectRefused(optionsWithKey(std::nullopt), "12345");
}

TEST_F(VLLifeCycleManagerTest, StartUpLogsTheKeyAndTheLaunchOptions) {
    launch(optionsWithKey(kKey), Dictionary{{"source", "icon"}});
    EXPECT_EQ(log().count("Vorlane SDK initialised with app key: " + kKey, VLLogLevel::Info), 1);
    EXPECT_EQ(log().count(R"(launchOptions: {"source":"icon"})", VLLogLevel::Info), 1);
}

TEST_F(VLLifeCycleManagerTest, MissingLaunchOptionsAreLoggedAsNull) {
    launch();
    EXPECT_EQ(log().count("launchOptions: (null)", VLLogLevel::Info), 1);
}

TEST_F(VLLifeCycleManagerTest, StartUpClearsThePhashOfTheLastRun) {
    Vorlane::setPhash("old");
    launch();
    EXPECT_EQ(Vorlane::phash(), std::nullopt);
}

TEST_F(VLLifeCycleManagerTest, APhashOfARemoteLaunchNotificationIsStored) {
    launch(optionsWithKey(kKey),
           Dictionary{{UIApplicationLaunchOptionsRemoteNotificationKey, Dictionary{{"p", "hash-1"}}}});
    EXPECT_EQ(Vorlane::phash(), "hash-1");
    EXPECT_EQ(log().count(R"(App launched via remote notification: {"p":"hash-1"})", VLLogLevel::Info), 1);
    EXPECT_EQ(log().count("App was launched via an Vorlane notification. Storing notification phash: hash-1",
                          VLLogLevel::Info),
              1);
}

TEST_F(VLLifeCycleManagerTest, APhashOfALocalLaunchNotificationIsStored) {
    UILocalNotification notification;
    notification.alertBody = "Hello";
    notification.userInfo = Dictionary{{"p", "hash-2"}};
    launch(optionsWithKey(kKey),
           Dictionary{{UIApplicationLaunchOptionsLocalNotificationKey, notification.toDictionary()}});
    EXPECT_EQ(Vorlane::phash(), "hash-2");
    EXPECT_EQ(log().count("App launched via local notification: " + notification.description(), VLLogLevel::Info), 1);
}

TEST_F(VLLifeCycleManagerTest, ARemoteLaunchNotificationWinsOverALocalOne) {
    UILocalNotification notification;
    notification.userInfo = Dictionary{{"p", "local"}};
    launch(optionsWithKey(kKey),
           Dictionary{{UIApplicationLaunchOptionsRemoteNotificationKey, Dictionary{{"aps", Dictionary()}}},
                      {UIApplicationLaunchOptionsLocalNotificationKey, notification.toDictionary()}});
    EXPECT_EQ(Vorlane::phash(), std::nullopt);
    EXPECT_TRUE(log().linesContaining("App launched via local notification").empty());
}

TEST_F(VLLifeCycleManagerTest, ALaunchPhashThatIsANumberIsIgnored) {
    launch(optionsWithKey(kKey), Dictionary{{UIApplicationLaunchOptionsRemoteNotificationKey, Dictionary{{"p", 7}}}});
    EXPECT_EQ(Vorlane::phash(), std::nullopt);
    EXPECT_TRUE(log().linesContaining("Storing notification phash").empty());
}

TEST_F(VLLifeCycleManagerTest, LaunchNotificationsOfAnotherKindAreIgnored) {
    for (const auto* key :
         {UIApplicationLaunchOptionsRemoteNotificationKey, UIApplicationLaunchOptionsLocalNotificationKey}) {
        for (const auto& value : {Value(1), Value("p"), Value(nullptr), Value(Array{}), Value(true)}) {
            launch(optionsWithKey(kKey), Dictionary{{key, value}});
            EXPECT_EQ(Vorlane::phash(), std::nullopt);
        }
    }
}

TEST_F(VLLifeCycleManagerTest, PushTokenAndFetchIntervalAreRequestedAfterStartUp) {
    launch();
    EXPECT_EQ(phone().simulatedApplication().remoteNotificationRegistrations(), 0);
    phone().runMainQueue();
    EXPECT_EQ(phone().simulatedApplication().remoteNotificationRegistrations(), 1);
    EXPECT_EQ(phone().simulatedApplication().backgroundFetchIntervals(), std::vector<TimeInterval>{86400.0});
}

TEST_F(VLLifeCycleManagerTest, TheConfigurationIsFetchedAtStartUp) {
    launch();
    EXPECT_EQ(session().requests(kConfigPath + kKey).size(), 1U);
}

TEST_F(VLLifeCycleManagerTest, WithoutAnyConfigurationAnErrorIsLogged) {
    launch();
    session().fail(kConfigPath);
    const std::string gap(24, ' ');
    EXPECT_EQ(log().count("SDK cannot launch permission service or location service: the" + gap +
                              "SDK config could not be retrieved from Vorlane and there is no" + gap +
                              "cached config to fall back on. Check device connectivity.",
                          VLLogLevel::Error),
              1);
}

TEST_F(VLLifeCycleManagerTest, WithAConfigurationNoErrorIsLogged) {
    launch();
    session().answer(kConfigPath, 200, R"({"services":{}})");
    EXPECT_TRUE(log().linesContaining("SDK cannot launch").empty());
}

TEST_F(VLLifeCycleManagerTest, AnActiveApplicationStartsItsSessionAtLaunch) {
    phone().simulatedApplication().setApplicationState(UIApplicationState::Active);
    launch();
    EXPECT_EQ(sessionStarts(), 1U);
}

TEST_F(VLLifeCycleManagerTest, AnInactiveApplicationStartsItsSessionLater) {
    launch();
    EXPECT_EQ(sessionStarts(), 0U);
    application().didBecomeActive();
    EXPECT_EQ(sessionStarts(), 1U);
    EXPECT_EQ(log().count("App Entering Foreground.", VLLogLevel::Debug), 1);
}

TEST_F(VLLifeCycleManagerTest, BecomingActiveTwiceStartsOneSession) {
    launch();
    application().didBecomeActive();
    application().willResignActive();
    application().didBecomeActive();
    EXPECT_EQ(sessionStarts(), 1U);
}

TEST_F(VLLifeCycleManagerTest, BecomingActiveAfterTheBackgroundStartsASecondSession) {
    launch();
    application().didBecomeActive();
    application().didEnterBackground();
    application().didBecomeActive();
    EXPECT_EQ(sessionStarts(), 2U);
    EXPECT_EQ(sessionEnds(), 1U);
    EXPECT_EQ(log().count("App Entering Background.", VLLogLevel::Debug), 1);
}

TEST_F(VLLifeCycleManagerTest, TerminationInTheForegroundEndsTheSession) {
    launch();
    application().didBecomeActive();
    application().willTerminate();
    EXPECT_EQ(sessionEnds(), 1U);
    EXPECT_EQ(log().count("App Terminated.", VLLogLevel::Debug), 1);
}

TEST_F(VLLifeCycleManagerTest, TerminationInTheBackgroundSendsNoSecondEnd) {
    launch();
    application().didBecomeActive();
    application().didEnterBackground();
    application().willTerminate();
    EXPECT_EQ(sessionEnds(), 1U);
    EXPECT_TRUE(log().linesContaining("sessionEnd() was called").empty());
}

TEST_F(VLLifeCycleManagerTest, TheBackgroundAndTerminationClearTheForcedGeoUpdate) {
    launch();
    application().didBecomeActive();
    const auto stored = [this] {
        const auto settings =
            NSPropertyListSerialization::dictionaryWithContentsOfFile(documentsPath("VLLibSettings.plist"));
        return settings.value_or(Dictionary())["VLForceGeoConfigUpdate"];
    };
    application().didEnterBackground();
    EXPECT_EQ(stored(), Value(false));
    application().willTerminate();
    EXPECT_EQ(stored(), Value(false));
}

TEST_F(VLLifeCycleManagerTest, BecomingActiveClearsTheNotificationOpenFlag) {
    launch();
    Vorlane::sharedInstance().setNotificationOpen(true);
    application().didBecomeActive();
    EXPECT_FALSE(Vorlane::sharedInstance().isNotificationOpen());
}

TEST_F(VLLifeCycleManagerTest, ASecondBecomeActiveKeepsTheNotificationOpenFlag) {
    launch();
    application().didBecomeActive();
    Vorlane::sharedInstance().setNotificationOpen(true);
    application().didBecomeActive();
    EXPECT_TRUE(Vorlane::sharedInstance().isNotificationOpen());
}

TEST_F(VLLifeCycleManagerTest, ASecondStartUpObservesEachStateOnce) {
    launch();
    launch();
    EXPECT_EQ(session().requests(kConfigPath).size(), 2U);
    application().didBecomeActive();
    EXPECT_EQ(sessionStarts(), 1U);
    EXPECT_EQ(log().count("App Entering Foreground.", VLLogLevel::Debug), 1);
}

TEST_F(VLLifeCycleManagerTest, DefaultOptionsLogAtInfo) {
    auto options = VLSDKOptions::defaultOptions();
    options.setAppKey(kKey);
    launch(options);
    application().didBecomeActive();
    EXPECT_EQ(log().linesContaining("Vorlane SDK initialised").size(), 1U);
    EXPECT_TRUE(log().linesContaining("App Entering Foreground.").empty());
}

TEST_F(VLLifeCycleManagerTest, DevelopmentOptionsLogAtDebug) {
    launch(optionsWithKey(kKey));
    application().didBecomeActive();
    EXPECT_EQ(log().linesContaining("App Entering Foreground.").size(), 1U);
}

TEST_F(VLLifeCycleManagerTest, PlainOptionsLogNoLine) {
    VLSDKOptions options;
    options.setAppKey(kKey);
    VLLog::sharedInstance().setLogLevel(VLLogLevel::Off);
    launch(options);
    application().didBecomeActive();
    session().fail(kConfigPath);
    EXPECT_TRUE(log().lines().empty());
}

TEST_F(VLLifeCycleManagerTest, ANullApplicationIsAccepted) {
    Vorlane::initialiseSDKWithApplication(nullptr, std::nullopt, optionsWithKey(kKey));
    phone().runMainQueue();
    EXPECT_EQ(session().requests(kConfigPath).size(), 1U);
}

}  // namespace

}  // namespace vorlane

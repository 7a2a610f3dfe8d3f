// The start of the permission service, its queue, and the system prompts.

#include "Notifications/VLPermissionService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <mutex>

#include "Notifications/VLAuthorisationHelper_iOS10To11.h"
#include "Notifications/VLUserNotificationCentre_iOS8To9.h"
#include "Tests/Notifications/PermissionsTest.h"

namespace vorlane {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kProvisionalConfig = R"({"notification":{"provisional_authorisation":1}})";

const std::string kProvisionalDone =
    "Register device triggered by VLPermissionService.requestNotificationAuthorisationWithProvisionalAuth(1)";
const std::string kPromptDone =
    "Register device triggered by VLPermissionService.requestNotificationAuthorisationWithProvisionalAuth(0)";

/// A notification centre with scripted answers, given immediately or never.
class ScriptedCentre : public VLUserNotificationCentre {
public:
    void requestNotificationAuthorisation(std::uint64_t options, AuthorisationHandler completionHandler) override {
        requestedOptions.push_back(options);
        if (answersAtOnce) completionHandler(status, error);
    }
    void getNotificationSettingsWithCompletionHandler(SettingsHandler completionHandler) override {
        if (!answersSettings) return;
        onMainQueue([handler = std::move(completionHandler), status = status] {
            VLUserNotificationSettings settings;
            settings.authorisationStatus = status;
            handler(settings);
        });
    }
    bool isProvisionalAuthorisationSupported() const override { return supportsProvisional; }

    std::vector<std::uint64_t> requestedOptions;
    bool answersAtOnce = true;
    bool answersSettings = true;
    bool supportsProvisional = true;
    std::int64_t status = 2;
    std::optional<NSError> error;
};

class VLPermissionServiceTest : public PermissionsTest {
protected:
    explicit VLPermissionServiceTest(SimulatedPhone::Options options = {}) : PermissionsTest(std::move(options)) {}

    void prompt(VLPermissions permission) {
        permissions->queueSystemPromptForPermission(permission);
        phone().settle();
    }

    /// Requests authorisation; returns how often the handler ran.
    int request(bool isProvisional) {
        const auto calls = std::make_shared<std::atomic<int>>(0);
        permissions->requestNotificationAuthorisationWithProvisionalAuth(isProvisional, [calls] { ++*calls; });
        phone().settle();
        return *calls;
    }
};

TEST_F(VLPermissionServiceTest, ANewServiceIsClosedWithOneDaysInterval) {
    EXPECT_FALSE(permissions->isQueueOpen());
    EXPECT_EQ(permissions->requestTimeLimitSeconds(), 86400);
    EXPECT_FALSE(permissions->providesAppNotificationSettings());
}

TEST_F(VLPermissionServiceTest, TheStartIsLoggedAndOpensTheQueue) {
    start();
    EXPECT_TRUE(permissions->isQueueOpen());
    EXPECT_EQ(log().count("Starting permission service", VLLogLevel::Debug), 1);
    EXPECT_THAT(prompts, IsEmpty());
}

TEST_F(VLPermissionServiceTest, TheStartStoresTheSettingsScreenOption) {
    start("{}", true);
    EXPECT_TRUE(permissions->providesAppNotificationSettings());
    start("{}", false);
    EXPECT_FALSE(permissions->providesAppNotificationSettings());
}

TEST_F(VLPermissionServiceTest, PromptsWaitForTheStartInOrder) {
    permissions->queueSystemPromptForPermission(VLPermissions::LocationWhenInUse);
    permissions->queueSystemPromptForPermission(VLPermissions::LocationAlways);
    phone().advance(1'000'000);
    EXPECT_THAT(locationManager->requests(), IsEmpty());
    start();
    EXPECT_THAT(locationManager->requests(), ElementsAre("locationWhenInUse", "locationAlways"));
}

TEST_F(VLPermissionServiceTest, EachPermissionHasItsPrompt) {
    start();
    prompt(VLPermissions::Notifications);
    EXPECT_THAT(prompts, ElementsAre(Prompt{"notifications", 15U}));
    EXPECT_THAT(locationManager->requests(), IsEmpty());
    prompt(VLPermissions::LocationAlways);
    EXPECT_THAT(locationManager->requests(), ElementsAre("locationAlways"));
    prompt(VLPermissions::LocationWhenInUse);
    EXPECT_THAT(locationManager->requests(), ElementsAre("locationAlways", "locationWhenInUse"));
    EXPECT_EQ(prompts.size(), 1U);
}

TEST_F(VLPermissionServiceTest, AnUnknownPermissionIsIgnoredSilently) {
    start();
    log().clear();
    for (const std::uint64_t number :
         {std::uint64_t{3}, std::uint64_t{39}, std::numeric_limits<std::uint64_t>::max()}) {
        prompt(static_cast<VLPermissions>(number));
        EXPECT_THAT(softOptIn(static_cast<VLPermissions>(number)), IsEmpty());
    }
    EXPECT_THAT(prompts, IsEmpty());
    EXPECT_THAT(locationManager->requests(), IsEmpty());
    EXPECT_THAT(log().lines(), IsEmpty());
    EXPECT_EQ(settings->lastPermissionInterstitial(), 0);
}

TEST_F(VLPermissionServiceTest, PromptsAreIssuedOffTheMainQueue) {
    const auto wasOnMainQueue = std::make_shared<std::atomic<bool>>(true);
    locationManager->setRequestObserver(
        [wasOnMainQueue](const std::string&) { *wasOnMainQueue = Platform::current().mainQueue()->isCurrent(); });
    start();
    prompt(VLPermissions::LocationAlways);
    EXPECT_FALSE(*wasOnMainQueue);
}

TEST_F(VLPermissionServiceTest, WithoutALocationManagerNoLocationPromptAppears) {
    locationManager = nullptr;
    permissions = makeService();
    start();
    for (const auto permission : {VLPermissions::LocationAlways, VLPermissions::LocationWhenInUse}) {
        prompt(permission);
        EXPECT_THAT(softOptIn(permission), IsEmpty());
    }
    EXPECT_THAT(prompts, IsEmpty());
}

TEST_F(VLPermissionServiceTest, AProvisionalRequestPrecedesQueuedPrompts) {
    phone().simulatedUser().setAnswer("notifications", SimulatedUser::Answer::Later);
    permissions->queueSystemPromptForPermission(VLPermissions::LocationAlways);
    start(kProvisionalConfig);
    EXPECT_THAT(prompts, ElementsAre(Prompt{"notifications", 79U}));
    EXPECT_FALSE(permissions->isQueueOpen());
    EXPECT_THAT(locationManager->requests(), IsEmpty());
    phone().simulatedUser().answer("notifications", SimulatedUser::Answer::Allow);
    phone().settle();
    EXPECT_TRUE(permissions->isQueueOpen());
    EXPECT_THAT(locationManager->requests(), ElementsAre("locationAlways"));
    EXPECT_EQ(log().count(kProvisionalDone, VLLogLevel::Debug), 1);
}

TEST_F(VLPermissionServiceTest, AProvisionalRequestIncludesTheSettingsScreenOption) {
    start(kProvisionalConfig, true);
    EXPECT_THAT(prompts, ElementsAre(Prompt{"notifications", 111U}));
}

TEST_F(VLPermissionServiceTest, ARefusedProvisionalRequestOpensTheQueueToo) {
    phone().simulatedUser().setAnswer("notifications", SimulatedUser::Answer::Deny);
    start(kProvisionalConfig);
    EXPECT_TRUE(permissions->isQueueOpen());
    EXPECT_EQ(log().count(kProvisionalDone, VLLogLevel::Debug), 1);
}

TEST_F(VLPermissionServiceTest, AFailedProvisionalRequestOpensTheQueueToo) {
    phone().simulatedUser().setAnswer("notifications", SimulatedUser::Answer::Error);
    start(kProvisionalConfig);
    EXPECT_TRUE(permissions->isQueueOpen());
    EXPECT_EQ(log().linesContaining("Error occurred when requesting notification authorisation: ").size(), 1U);
    EXPECT_EQ(log().count(kProvisionalDone, VLLogLevel::Debug), 0);
}

TEST_F(VLPermissionServiceTest, AnUndecidedProvisionalRequestOpensTheQueueToo) {
    phone().simulatedUser().setAnswer("notifications", SimulatedUser::Answer::Undetermined);
    start(kProvisionalConfig);
    EXPECT_TRUE(permissions->isQueueOpen());
}

TEST_F(VLPermissionServiceTest, UnsupportedProvisionalRequestsAreSkipped) {
    const std::vector<std::shared_ptr<VLUserNotificationCentre>> centres = {
        std::make_shared<VLUserNotificationCentre_iOS8To9>(phone().application(), settings, refreshHelper),
        std::make_shared<VLUserNotificationCentre_iOS10Plus>(phone().userNotificationCenter(), phone().application(),
                                                             std::make_shared<VLAuthorisationHelper_iOS10To11>(),
                                                             refreshHelper, settings)};
    for (const auto& old : centres) {
        permissions = makeService(old);
        load(kProvisionalConfig);
        permissions->startWithConfig(*config, false);
        EXPECT_TRUE(permissions->isQueueOpen());
        phone().settle();
        EXPECT_THAT(prompts, IsEmpty());
    }
}

TEST_F(VLPermissionServiceTest, OnlyOneOrTrueRequestsProvisionally) {
    const auto scripted = std::make_shared<ScriptedCentre>();
    const auto requestsWith = [&](const std::string& value) {
        scripted->requestedOptions.clear();
        permissions = makeService(scripted);
        start(R"({"notification":{"provisional_authorisation":)" + value + "}}");
        EXPECT_TRUE(permissions->isQueueOpen()) << value;
        return scripted->requestedOptions.size();
    };
    for (const auto* value : {"1", "1.0", "true"}) EXPECT_EQ(requestsWith(value), 1U) << value;
    for (const auto* value : {"0", "2", "-1", "1.5", "false", "null", "\"1\"", "\"true\"", "[1]", "{}"}) {
        EXPECT_EQ(requestsWith(value), 0U) << value;
    }
}

TEST_F(VLPermissionServiceTest, AnInvalidConfigurationOpensTheQueue) {
    const auto scripted = std::make_shared<ScriptedCentre>();
    for (const auto* value : {"{}", R"({"notification":1})", R"({"notification":null})", R"({"notification":[1]})",
                              R"({"provisional_authorisation":1})", "7", "null", "[]"}) {
        permissions = makeService(scripted);
        start(value);
        EXPECT_TRUE(permissions->isQueueOpen()) << value;
        EXPECT_EQ(permissions->requestTimeLimitSeconds(), 86400) << value;
    }
    EXPECT_THAT(scripted->requestedOptions, IsEmpty());
}

TEST_F(VLPermissionServiceTest, ALaterStartOpensAClosedQueue) {
    phone().simulatedUser().setAnswer("notifications", SimulatedUser::Answer::Later);
    start(kProvisionalConfig);
    EXPECT_FALSE(permissions->isQueueOpen());
    start();
    EXPECT_TRUE(permissions->isQueueOpen());
}

TEST_F(VLPermissionServiceTest, ALaterStartKeepsTheQueueOpen) {
    start(R"({"reprompt_interval":100})");
    phone().simulatedUser().setAnswer("notifications", SimulatedUser::Answer::Later);
    start(R"({"reprompt_interval":200,"notification":{"provisional_authorisation":1}})");
    EXPECT_TRUE(permissions->isQueueOpen());
    EXPECT_EQ(permissions->requestTimeLimitSeconds(), 200);
    prompt(VLPermissions::LocationAlways);
    EXPECT_THAT(locationManager->requests(), ElementsAre("locationAlways"));
}

TEST_F(VLPermissionServiceTest, ALaterStartMayKeepTheInterval) {
    start(R"({"reprompt_interval":100})");
    start();
    EXPECT_EQ(permissions->requestTimeLimitSeconds(), 100);
}

TEST_F(VLPermissionServiceTest, TheIntervalIsANumberOrDecimalString) {
    const std::vector<std::pair<std::string, std::int64_t>> intervals = {
        {"3600", 3600},
        {"0", 0},
        {"-5", -5},
        {"3600.9", 3600},
        {"1e300", std::numeric_limits<std::int64_t>::max()},
        {R"("3600")", 3600},
        {R"("0")", 0},
        {R"("+60")", 60},
        {R"("-5")", -5},
        {R"("3600.9")", 3600},
        {R"("60.")", 60},
        {R"("99999999999999999999")", std::numeric_limits<std::int64_t>::max()},
        // Not an interval.
        {R"("")", 86400},
        {R"("-")", 86400},
        {R"("+-1")", 86400},
        {R"(".5")", 86400},
        {R"("1.5.2")", 86400},
        {R"("an hour")", 86400},
        {R"("3600s")", 86400},
        {R"("0x10")", 86400},
        {"true", 86400},
        {"null", 86400},
        {"[3600]", 86400},
        {"{}", 86400},
    };
    for (const auto& [text, seconds] : intervals) {
        permissions = makeService();
        start(R"({"reprompt_interval":)" + text + "}");
        EXPECT_EQ(permissions->requestTimeLimitSeconds(), seconds) << text;
    }
}

TEST_F(VLPermissionServiceTest, ADestroyedServiceDropsQueuedPrompts) {
    phone().simulatedUser().setAnswer("notifications", SimulatedUser::Answer::Later);
    permissions->queueSystemPromptForPermission(VLPermissions::LocationAlways);
    start(kProvisionalConfig);
    permissions.reset();
    phone().simulatedUser().answer("notifications", SimulatedUser::Answer::Allow);
    phone().settle();
    EXPECT_THAT(locationManager->requests(), IsEmpty());
}

TEST_F(VLPermissionServiceTest, TheOptionsIncludeTheSettingsScreen) {
    const auto scripted = std::make_shared<ScriptedCentre>();
    permissions = makeService(scripted);
    EXPECT_EQ(request(false), 1);
    EXPECT_EQ(request(true), 1);
    start("{}", true);
    EXPECT_EQ(request(false), 1);
    EXPECT_EQ(request(true), 1);
    EXPECT_THAT(scripted->requestedOptions, ElementsAre(15U, 79U, 47U, 111U));
}

TEST_F(VLPermissionServiceTest, TheHandlerRunsAfterTheAnswerWasHandled) {
    const auto scripted = std::make_shared<ScriptedCentre>();
    scripted->status = -1;
    permissions = makeService(scripted);
    std::optional<VLUserNotificationSettings> seen;
    permissions->requestNotificationAuthorisationWithProvisionalAuth(false,
                                                                     [&] { seen = settings->notificationSettings(); });
    phone().settle();
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->authorisationStatus, -1);
}

TEST_F(VLPermissionServiceTest, AnAnswerRegistersTheDeviceAgain) {
    settings->setDeviceToken(Data{0xAB});
    EXPECT_EQ(request(false), 1);
    EXPECT_EQ(log().count(kPromptDone, VLLogLevel::Debug), 1);
    const auto sent = session().lastRequest(urlBuilder->deviceRegistrationURL().absoluteString()).payload();
    EXPECT_EQ(sent["devicetoken"], Value("ab"));
    EXPECT_EQ(sent["notification_settings.v2"], Value(Dictionary{{"ios", allowed().toDictionary()}}));
}

TEST_F(VLPermissionServiceTest, EachStatusIsLoggedAndHandled) {
    const auto scripted = std::make_shared<ScriptedCentre>();
    permissions = makeService(scripted);
    settings->setNotificationSettings(allowed());
    const auto linesOf = [&](std::int64_t status, bool isProvisional) {
        scripted->status = status;
        log().clear();
        EXPECT_EQ(request(isProvisional), 1) << status;
        std::vector<std::pair<VLLogLevel, std::string>> lines;
        for (const auto& line : log().lines()) lines.emplace_back(line.level, line.message);
        return lines;
    };
    using Lines = std::vector<std::pair<VLLogLevel, std::string>>;
    // Without a token there is no registration.
    const std::pair noToken{VLLogLevel::Warn,
                            std::string("No device token found - skipping device token registration")};
    for (const std::int64_t status : {1, 2, 3}) {
        EXPECT_EQ(linesOf(status, false), (Lines{{VLLogLevel::Debug, kPromptDone}, noToken})) << status;
        EXPECT_EQ(linesOf(status, true), (Lines{{VLLogLevel::Debug, kProvisionalDone}, noToken})) << status;
    }
    EXPECT_EQ(linesOf(0, false),
              (Lines{{VLLogLevel::Warn,
                      "Notification authorisation request returned a Not Determined status, but no error occurred."}}));
    scripted->error = NSError("some.domain", 7, {{NSLocalizedDescriptionKey, "No way"}});
    EXPECT_EQ(linesOf(0, false), (Lines{{VLLogLevel::Error,
                                         "Error occurred when requesting notification authorisation: Error "
                                         "Domain=some.domain Code=7 \"No way\""}}));
    for (const std::int64_t status : {-2, 4, 99}) EXPECT_EQ(linesOf(status, false), Lines()) << status;
    EXPECT_EQ(settings->notificationSettings(), allowed());
    EXPECT_EQ(linesOf(-1, false),
              (Lines{{VLLogLevel::Info, "User has seen the notification authorisation system prompt"}}));
    EXPECT_EQ(settings->notificationSettings(),
              VLUserNotificationSettings::settingsWithAuthorisation(-1, -1, -1, -1, -1, -1, -1, -1, -1));
}

TEST_F(VLPermissionServiceTest, AnAnswerNeedsNoHandler) {
    permissions->requestNotificationAuthorisationWithProvisionalAuth(false, nullptr);
    phone().settle();
    EXPECT_EQ(log().count(kPromptDone, VLLogLevel::Debug), 1);
}

class VLPermissionServiceLegacyTest : public VLPermissionServiceTest {
protected:
    VLPermissionServiceLegacyTest() : VLPermissionServiceTest({.systemVersion = 9.0}) {
        permissions = makeService(
            std::make_shared<VLUserNotificationCentre_iOS8To9>(phone().application(), settings, refreshHelper));
    }
};

TEST_F(VLPermissionServiceLegacyTest, ThePromptAppearsOnTheMainQueue) {
    bool isOnMainQueue = false;
    application().setEventObserver([&](const std::string& event, const Dictionary& fields) {
        if (event != "prompt") return;
        isOnMainQueue = phone().mainQueue()->isCurrent();
        prompts.push_back({fields.at("kind").get<std::string>(), fields.at("options")});
    });
    start();
    prompt(VLPermissions::Notifications);
    EXPECT_TRUE(isOnMainQueue);
    EXPECT_THAT(prompts, ElementsAre(Prompt{"notifications", 7U}));
    EXPECT_EQ(settings->notificationSettings()->authorisationStatus, -1);
    EXPECT_EQ(log().count("User has seen the notification authorisation system prompt", VLLogLevel::Info), 1);
}

TEST_F(VLPermissionServiceTest, AShutdownAbandonsTheWaitForSettings) {
    const auto scripted = std::make_shared<ScriptedCentre>();
    scripted->answersSettings = false;
    permissions = makeService(scripted);
    start();
    permissions->queueSoftOptInForPermission(VLPermissions::Notifications, makeInterstitial());
    permissions->queueSystemPromptForPermission(VLPermissions::LocationAlways);
    EXPECT_FALSE(phone().settle(0.02));
    EXPECT_THAT(locationManager->requests(), IsEmpty());
    const auto start = std::chrono::steady_clock::now();
    Platform::shutdown();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    EXPECT_TRUE(session().requests("/interstitial/").empty());
    EXPECT_EQ(settings->lastPermissionInterstitial(), 0);
}

}  // namespace

}  // namespace vorlane

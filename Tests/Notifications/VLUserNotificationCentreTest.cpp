#include "Notifications/VLUserNotificationCentre.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>

#include "Notifications/VLAuthorisationHelper_iOS10To11.h"
#include "Notifications/VLUserNotificationCentre_iOS8To9.h"
#include "Tests/Notifications/NotificationsTest.h"

namespace vorlane {

namespace {

TEST(VLAuthorisationHelperTest, From10To11ProvisionalIsUnknown) {
    const VLAuthorisationHelper_iOS10To11 helper;
    const std::vector<std::pair<std::int64_t, std::int64_t>> statuses = {{-1, 0}, {0, 0}, {1, 1},
                                                                         {2, 2},  {3, 0}, {4, 0}};
    for (const auto& [platform, ours] : statuses) EXPECT_EQ(helper.UNAuthStatusToVLAuthStatus(platform), ours);
    EXPECT_EQ(helper.VLAuthOptionsToUNAuthOptions(127), 15U);
    EXPECT_EQ(helper.VLAuthOptionsToUNAuthOptions(64), 0U);
    EXPECT_FALSE(helper.isProvisionalAuthorisationSupported());
}

TEST(VLAuthorisationHelperTest, From12OnProvisionalIsKnown) {
    const VLAuthorisationHelper_iOS12Plus helper;
    const std::vector<std::pair<std::int64_t, std::int64_t>> statuses = {{-1, 0}, {0, 0}, {1, 1},
                                                                         {2, 2},  {3, 3}, {4, 0}};
    for (const auto& [platform, ours] : statuses) EXPECT_EQ(helper.UNAuthStatusToVLAuthStatus(platform), ours);
    EXPECT_EQ(helper.VLAuthOptionsToUNAuthOptions(127), 111U);
    EXPECT_EQ(helper.VLAuthOptionsToUNAuthOptions(16), 0U);
    EXPECT_EQ(helper.VLAuthOptionsToUNAuthOptions(std::numeric_limits<std::uint64_t>::max()), 111U);
    EXPECT_TRUE(helper.isProvisionalAuthorisationSupported());
}

TEST(VLUserNotificationCentreScalesTest, ValuesBelow3AreKeptOthersUnknown) {
    using Centre = VLUserNotificationCentre_iOS10Plus;
    const std::vector<std::pair<std::int64_t, std::int64_t>> values = {{-5, -5}, {0, 0},  {1, 1},
                                                                       {2, 2},   {3, -1}, {99, -1}};
    for (const auto& [platform, ours] : values) {
        EXPECT_EQ(Centre::UNAlertStyleToVLAlertStyle(platform), ours);
        EXPECT_EQ(Centre::UNNotifSettingToVLNotifSetting(platform), ours);
    }
}

class CentreTest : public NotificationsTest {
protected:
    using NotificationsTest::NotificationsTest;

    VLUserNotificationSettings read(VLUserNotificationCentre& asked) {
        std::optional<VLUserNotificationSettings> received;
        asked.getNotificationSettingsWithCompletionHandler([&](const auto& answer) {
            EXPECT_TRUE(phone().mainQueue()->isCurrent());
            received = answer;
        });
        EXPECT_FALSE(received);
        phone().settle();
        return received.value_or(VLUserNotificationSettings{});
    }

    struct Answer {
        int calls = 0;
        std::int64_t status = 99;
        std::optional<NSError> error = std::nullopt;
    };
    VLUserNotificationCentre::AuthorisationHandler keepIn(Answer& answer) {
        return [&answer](std::int64_t status, std::optional<NSError> error) {
            answer = {answer.calls + 1, status, std::move(error)};
        };
    }
};

class ModernCentreTest : public CentreTest {
protected:
    ModernCentreTest() {
        application().setEventObserver([this](const std::string& event, const Dictionary& fields) {
            if (event == "prompt") prompts.push_back(fields);
        });
    }

    Answer request(VLUserNotificationCentre& asked, std::uint64_t options) {
        Answer answer;
        asked.requestNotificationAuthorisation(options, keepIn(answer));
        phone().settle();
        return answer;
    }

    std::vector<std::string> categories() {
        std::vector<std::string> identifiers;
        for (const auto& category : center().notificationCategories()) identifiers.push_back(category.identifier);
        return identifiers;
    }

    std::vector<Dictionary> prompts;
};

TEST_F(ModernCentreTest, SettingsAreReadFieldByField) {
    center().setNotificationSettings({3, 2, 1, 0, 2, 1, 0, 2});
    application().setBackgroundRefreshStatus(UIBackgroundRefreshStatus::Restricted);
    EXPECT_EQ(read(*centre), VLUserNotificationSettings::settingsWithAuthorisation(3, 2, 1, 0, 0, 2, 1, 0, 2));
    center().setNotificationSettings({9, 3, 3, 3, 3, 3, 3, 3});
    application().setBackgroundRefreshStatus(static_cast<UIBackgroundRefreshStatus>(7));
    EXPECT_EQ(read(*centre), VLUserNotificationSettings::settingsWithAuthorisation(0, -1, -1, -1, -1, -1, -1, -1, -1));
}

TEST_F(ModernCentreTest, AGrantedRequestIsAuthorised) {
    const auto answer = request(*centre, 7 | 16);
    EXPECT_EQ(answer.calls, 1);
    EXPECT_EQ(answer.status, 2);
    EXPECT_EQ(answer.error, std::nullopt);
    ASSERT_EQ(prompts.size(), 1U);
    EXPECT_EQ(prompts[0]["options"], Value(7));
    EXPECT_EQ(log().count("Prominent notification authorisation granted.", VLLogLevel::Info), 1);
}

TEST_F(ModernCentreTest, AGrantedProvisionalRequestIsProvisional) {
    EXPECT_EQ(request(*centre, 7 | 64).status, 3);
    EXPECT_EQ(log().count("Provisional notification authorisation granted.", VLLogLevel::Info), 1);
    EXPECT_EQ(read(*centre).authorisationStatus, 3);
}

TEST_F(ModernCentreTest, Below12AProvisionalRequestIsAuthorised) {
    const auto older = std::make_shared<VLUserNotificationCentre_iOS10Plus>(
        phone().userNotificationCenter(), phone().application(), std::make_shared<VLAuthorisationHelper_iOS10To11>(),
        refreshHelper, settings);
    EXPECT_EQ(request(*older, 64).status, 2);
    EXPECT_EQ(prompts.at(0)["options"], Value(0));
    EXPECT_FALSE(older->isProvisionalAuthorisationSupported());
    EXPECT_TRUE(centre->isProvisionalAuthorisationSupported());
}

TEST_F(ModernCentreTest, ARefusedRequestIsDenied) {
    phone().simulatedUser().setAnswer("notifications", SimulatedUser::Answer::Deny);
    const auto answer = request(*centre, 7);
    EXPECT_EQ(answer.status, 1);
    EXPECT_EQ(answer.error, std::nullopt);
    EXPECT_EQ(log().count("Notification authorisation request DENIED by user", VLLogLevel::Info), 1);
    EXPECT_EQ(categories(), std::vector<std::string>{"vl-basic-category"});
    EXPECT_EQ(read(*centre), VLUserNotificationSettings::settingsWithAuthorisation(1, 1, 1, 1, 2, 1, 1, 1, 0));
}

TEST_F(ModernCentreTest, AFailedRequestIsNotDetermined) {
    phone().simulatedUser().setAnswer("notifications", SimulatedUser::Answer::Error);
    const auto answer = request(*centre, 7);
    EXPECT_EQ(answer.status, 0);
    ASSERT_TRUE(answer.error);
    EXPECT_EQ(log().count("Notification authorisation request failed with error: " + answer.error->description(),
                          VLLogLevel::Error),
              1);
}

TEST_F(ModernCentreTest, TheHandlerWaitsForUserAndCategories) {
    phone().simulatedUser().setAnswer("notifications", SimulatedUser::Answer::Later);
    center().setNotificationCategories({{"own"}, {"vl-basic-category"}, {"other"}});
    int calls = 0;
    std::vector<std::string> seen;
    centre->requestNotificationAuthorisation(7, [&](auto, const auto&) {
        ++calls;
        seen = categories();
    });
    phone().settle();
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(phone().simulatedUser().openPrompts().size(), 1U);
    EXPECT_TRUE(phone().simulatedUser().answer("notifications", SimulatedUser::Answer::Allow));
    phone().settle();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(seen, (std::vector<std::string>{"own", "other", "vl-basic-category"}));
    EXPECT_TRUE(phone().simulatedUser().openPrompts().empty());
}

TEST_F(ModernCentreTest, TheHandlerOfARequestMayBeEmpty) {
    centre->requestNotificationAuthorisation(7, nullptr);
    phone().settle();
    EXPECT_EQ(categories(), std::vector<std::string>{"vl-basic-category"});
}

class LegacyCentreTest : public CentreTest {
protected:
    LegacyCentreTest() : CentreTest({.systemVersion = 9.0}) {}

    VLUserNotificationSettings stored(std::int64_t authorisation) {
        auto last = allowed();
        last.authorisationStatus = authorisation;
        settings->setNotificationSettings(last);
        return read(*legacy);
    }
    static VLUserNotificationSettings nothingAllowed(std::int64_t authorisation, std::int64_t setting) {
        return VLUserNotificationSettings::settingsWithAuthorisation(authorisation, setting, setting, setting, 2, -1,
                                                                     -1, -1, -1);
    }

    std::shared_ptr<VLUserNotificationCentre_iOS8To9> legacy =
        std::make_shared<VLUserNotificationCentre_iOS8To9>(phone().application(), settings, refreshHelper);
};

TEST_F(LegacyCentreTest, OptionsAreLimitedTo3Types) {
    EXPECT_EQ(VLUserNotificationCentre_iOS8To9::VLAuthOptionsToUIUserNotificationType(127), 7U);
    EXPECT_EQ(VLUserNotificationCentre_iOS8To9::VLAuthOptionsToUIUserNotificationType(72), 0U);
    EXPECT_FALSE(legacy->isProvisionalAuthorisationSupported());
}

TEST_F(LegacyCentreTest, AllowedTypesAreEnabledOthersDisabled) {
    const auto settingsWith = [](std::int64_t sound, std::int64_t badge, std::int64_t alert) {
        return VLUserNotificationSettings::settingsWithAuthorisation(2, sound, badge, alert, 2, -1, -1, -1, -1);
    };
    application().setUserNotificationTypes(1);
    EXPECT_EQ(read(*legacy), settingsWith(1, 2, 1));
    application().setUserNotificationTypes(2);
    EXPECT_EQ(read(*legacy), settingsWith(2, 1, 1));
    application().setUserNotificationTypes(4);
    EXPECT_EQ(read(*legacy), settingsWith(1, 1, 2));
    application().setUserNotificationTypes(7);
    EXPECT_EQ(read(*legacy), settingsWith(2, 2, 2));
    application().setUserNotificationTypes(8);
    EXPECT_EQ(read(*legacy), settingsWith(1, 1, 1));
}

TEST_F(LegacyCentreTest, WithoutAPromptTheStatusIsNotDetermined) {
    EXPECT_EQ(read(*legacy), nothingAllowed(0, -1));
    EXPECT_EQ(stored(0), nothingAllowed(0, -1));
}

TEST_F(LegacyCentreTest, AfterAPromptNoTypesMeansDenied) {
    for (const std::int64_t authorisation : {-1, 1, 2, 3}) {
        EXPECT_EQ(stored(authorisation), nothingAllowed(1, 1)) << authorisation;
    }
}

TEST_F(LegacyCentreTest, ARequestIsAnsweredBeforeThePlatformAsks) {
    application().registerUserNotificationSettings({.types = 0, .categories = {{"own"}}});
    Answer answer;
    std::vector<std::string> order;
    application().setUserNotificationSettingsObserver([&](const auto&) { order.emplace_back("settled"); });
    legacy->requestNotificationAuthorisation(127, [&](std::int64_t status, const auto& error) {
        order.emplace_back("answered");
        answer = {1, status, error};
    });
    EXPECT_EQ(order, (std::vector<std::string>{"answered", "settled"}));
    EXPECT_EQ(answer.status, -1);
    EXPECT_EQ(answer.error, std::nullopt);
    EXPECT_EQ(application().currentUserNotificationSettings(),
              (UIUserNotificationSettings{7, {{"own"}, {"vl-basic-category"}}}));
    legacy->requestNotificationAuthorisation(4, nullptr);
    EXPECT_EQ(application().currentUserNotificationSettings(),
              (UIUserNotificationSettings{4, {{"own"}, {"vl-basic-category"}}}));
}

TEST_F(LegacyCentreTest, AnUnknownBackgroundRefreshStatusIsMinus1) {
    for (const std::int64_t status : {0, 1, 2}) {
        application().setBackgroundRefreshStatus(static_cast<UIBackgroundRefreshStatus>(status));
        EXPECT_EQ(refreshHelper->getUIKitBackgroundRefreshSetting(), status);
    }
    for (const std::int64_t status : {-2, 3, 1000}) {
        application().setBackgroundRefreshStatus(static_cast<UIBackgroundRefreshStatus>(status));
        EXPECT_EQ(refreshHelper->getUIKitBackgroundRefreshSetting(), -1);
    }
    EXPECT_EQ(VLBackgroundRefreshHelper({}).getUIKitBackgroundRefreshSetting(), -1);
}

TEST_F(ModernCentreTest, TheHandlerRunsOnThePlatformsQueue) {
    std::atomic<bool> wasOnMainQueue = true;
    centre->requestNotificationAuthorisation(
        7, [&](auto, const auto&) { wasOnMainQueue = phone().mainQueue()->isCurrent(); });
    phone().settle();
    EXPECT_FALSE(wasOnMainQueue);
}

}  // namespace

}  // namespace vorlane

#include "Public/VLUserNotificationSettings.h"

#include <gtest/gtest.h>

#include "Public/VLValue.h"

namespace vorlane {

namespace {

using Settings = VLUserNotificationSettings;

TEST(VLUserNotificationSettingsTest, TheFieldsAreInOrder) {
    const auto settings = Settings::settingsWithAuthorisation(1, 2, 3, 4, 5, 6, 7, 8, 9);
    EXPECT_EQ(settings.authorisationStatus, 1);
    EXPECT_EQ(settings.sound, 2);
    EXPECT_EQ(settings.badge, 3);
    EXPECT_EQ(settings.alertSetting, 4);
    EXPECT_EQ(settings.silentPush, 5);
    EXPECT_EQ(settings.notificationCentre, 6);
    EXPECT_EQ(settings.lockScreen, 7);
    EXPECT_EQ(settings.carPlay, 8);
    EXPECT_EQ(settings.alertStyle, 9);
}

TEST(VLUserNotificationSettingsTest, TheDictionaryFormHas9Strings) {
    EXPECT_EQ(Settings::settingsWithAuthorisation(2, 2, 1, 0, -1, 2, 1, 0, 1).toDictionary(),
              (Dictionary{{"authorisation", "authorised"},
                          {"sound", "enabled"},
                          {"badge", "disabled"},
                          {"alert", "not_supported"},
                          {"silent_push", "unknown"},
                          {"notification_centre", "enabled"},
                          {"lock_screen", "disabled"},
                          {"carplay", "not_supported"},
                          {"alert_style", "banner"}}));
}

TEST(VLUserNotificationSettingsTest, SettingsInRangeRoundTrip) {
    for (std::int64_t authorisation = -1; authorisation <= 3; ++authorisation) {
        for (std::int64_t setting = -1; setting <= 2; ++setting) {
            const auto settings = Settings::settingsWithAuthorisation(authorisation, setting, setting, setting, setting,
                                                                      setting, setting, setting, setting);
            EXPECT_TRUE(Settings::settingsFromDictionary(settings.toDictionary()).isEqualToSettings(settings));
        }
    }
}

TEST(VLUserNotificationSettingsTest, OutOfRangeSettingsReadBackAsMinus1) {
    Settings settings;
    settings.sound = 7;
    EXPECT_EQ(settings.toDictionary().at("sound"), Value("unknown"));
    EXPECT_EQ(Settings::settingsFromDictionary(settings.toDictionary()).sound, -1);
}

TEST(VLUserNotificationSettingsTest, AMissingKeyReadsAsTheFallback) {
    const auto settings = Settings::settingsFromDictionary({{"badge", 5}});
    EXPECT_EQ(settings, Settings::settingsWithAuthorisation(0, -1, -1, -1, -1, -1, -1, -1, -1));
}

TEST(VLUserNotificationSettingsTest, AuthorisationsConvertBothWays) {
    EXPECT_EQ(Settings::authorisationStatusToString(-1), "prompted");
    EXPECT_EQ(Settings::authorisationStatusToString(0), "not_determined");
    EXPECT_EQ(Settings::authorisationStatusToString(1), "denied");
    EXPECT_EQ(Settings::authorisationStatusToString(2), "authorised");
    EXPECT_EQ(Settings::authorisationStatusToString(3), "provisional");
    EXPECT_EQ(Settings::authorisationStatusToString(4), "not_determined");
    EXPECT_EQ(Settings::stringToAuthorisationStatus("prompted"), -1);
    EXPECT_EQ(Settings::stringToAuthorisationStatus("not_determined"), 0);
    EXPECT_EQ(Settings::stringToAuthorisationStatus("denied"), 1);
    EXPECT_EQ(Settings::stringToAuthorisationStatus("authorised"), 2);
    EXPECT_EQ(Settings::stringToAuthorisationStatus("provisional"), 3);
    EXPECT_EQ(Settings::stringToAuthorisationStatus("something else"), 0);
}

TEST(VLUserNotificationSettingsTest, SettingsConvertBothWays) {
    EXPECT_EQ(Settings::notificationSettingToString(-1), "unknown");
    EXPECT_EQ(Settings::notificationSettingToString(0), "not_supported");
    EXPECT_EQ(Settings::notificationSettingToString(1), "disabled");
    EXPECT_EQ(Settings::notificationSettingToString(2), "enabled");
    EXPECT_EQ(Settings::notificationSettingToString(3), "unknown");
    EXPECT_EQ(Settings::stringToNotificationSetting("not_supported"), 0);
    EXPECT_EQ(Settings::stringToNotificationSetting("disabled"), 1);
    EXPECT_EQ(Settings::stringToNotificationSetting("enabled"), 2);
    EXPECT_EQ(Settings::stringToNotificationSetting("Enabled"), -1);
}

TEST(VLUserNotificationSettingsTest, AlertStylesConvertBothWays) {
    EXPECT_EQ(Settings::alertStyleToString(-1), "unknown");
    EXPECT_EQ(Settings::alertStyleToString(0), "none");
    EXPECT_EQ(Settings::alertStyleToString(1), "banner");
    EXPECT_EQ(Settings::alertStyleToString(2), "alert");
    EXPECT_EQ(Settings::alertStyleToString(3), "unknown");
    EXPECT_EQ(Settings::stringToAlertStyle("none"), 0);
    EXPECT_EQ(Settings::stringToAlertStyle("banner"), 1);
    EXPECT_EQ(Settings::stringToAlertStyle("alert"), 2);
    EXPECT_EQ(Settings::stringToAlertStyle(""), -1);
}

TEST(VLUserNotificationSettingsTest, OneFieldMakesADifference) {
    const Settings settings;
    std::int64_t Settings::*const fields[] = {
        &Settings::authorisationStatus, &Settings::sound,      &Settings::badge,
        &Settings::alertSetting,        &Settings::silentPush, &Settings::notificationCentre,
        &Settings::lockScreen,          &Settings::carPlay,    &Settings::alertStyle};
    for (const auto field : fields) {
        Settings other;
        other.*field = 1;
        EXPECT_FALSE(settings.isEqualToSettings(other));
    }
    EXPECT_TRUE(settings.isEqualToSettings(settings));
    EXPECT_FALSE(settings.isEqualToSettings(std::nullopt));
}

TEST(VLUserNotificationSettingsTest, TheHashMultipliesBy31) {
    const auto settings = Settings::settingsWithAuthorisation(-1, 0, 1, 2, -1, 0, 1, 2, 3);
    std::uint64_t expected = 1;
    for (const std::int64_t field : {-1, 0, 1, 2, -1, 0, 1, 2, 3}) {
        expected = 31 * expected + static_cast<std::uint64_t>(field);
    }
    EXPECT_EQ(settings.hash(), expected);
}

TEST(VLUserNotificationSettingsTest, VisibleMeansAllowedAndShownSomewhere) {
    for (std::int64_t authorisation = -1; authorisation <= 3; ++authorisation) {
        for (int shown = 0; shown < 8; ++shown) {
            Settings settings;
            settings.authorisationStatus = authorisation;
            settings.lockScreen = (shown & 1) != 0 ? 2 : 1;
            settings.notificationCentre = (shown & 2) != 0 ? 2 : 1;
            settings.alertSetting = (shown & 4) != 0 ? 2 : 0;
            EXPECT_EQ(settings.willNotificationsBeVisible(), authorisation >= 2 && shown != 0);
        }
    }
}

TEST(VLUserNotificationSettingsTest, OnlyProvisionalIsProvisional) {
    for (std::int64_t authorisation = -1; authorisation <= 4; ++authorisation) {
        Settings settings;
        settings.authorisationStatus = authorisation;
        EXPECT_EQ(settings.isProvisionallyAuthorised(), authorisation == 3);
    }
}

}  // namespace

}  // namespace vorlane

// Commands for notifications and for the notification settings of the platform.

#include "Public/Vorlane.h"
#include "Simulator/Phone/PhoneCommands.h"
#include "Simulator/Phone/PhoneNotifications.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

Value push(Phone& phone, const Dictionary& line) {
    Vorlane::didReceiveRemoteNotification(phone.device().application(),
                                          dictionaryFrom(requiredField(line, "payload"), "payload"));
    return nullptr;
}

Value token(Phone& phone, const Dictionary& line) {
    Vorlane::didRegisterForRemoteNotificationsWithDeviceToken(phone.device().application(),
                                                              dataFrom(requiredField(line, "hex"), "hex"),
                                                              OperationCall::callOfLine(phone, line).errorHandler());
    return nullptr;
}

Value legacySettings(Phone& phone, const Dictionary& line) {
    auto& application = phone.device().simulatedApplication();
    application.setUserNotificationTypes(
        static_cast<std::uint64_t>(integerFrom(requiredField(line, "types"), "types")));
    Vorlane::didRegisterUserNotificationSettings(phone.device().application(),
                                                 application.currentUserNotificationSettings());
    return nullptr;
}

Value fetchInBackground(Phone& phone, const Dictionary& line) {
    Vorlane::performFetchWithCompletionHandler(phone.device().application(),
                                               OperationCall::callOfLine(phone, line).fetchHandler());
    return nullptr;
}

Value schedulePlatform(Phone& phone, const Dictionary& line) {
    auto& application = phone.device().simulatedApplication();
    const auto notification = notificationFrom(requiredField(line, "notification"), "notification");
    application.scheduleLocalNotification(notification);
    return SimulatedApplication::notificationFields(application.handleOf(notification), notification);
}

Value openNotification(Phone& phone, const Dictionary& line) {
    Vorlane::didReceiveLocalNotification(phone.device().application(),
                                         notificationWithHandle(phone, requiredField(line, "handle")));
    return nullptr;
}

/// Stores one number of the platform.
using SettingSetter = void (*)(SimulatedApplication& application, UNNotificationSettings& settings, std::int64_t value);

const std::map<std::string, SettingSetter>& settingSetters() {
    using Application = SimulatedApplication;
    using Settings = UNNotificationSettings;
    static const std::map<std::string, SettingSetter> table = {
        {"authorizationStatus", [](Application&, Settings& s, std::int64_t v) { s.authorizationStatus = v; }},
        {"soundSetting", [](Application&, Settings& s, std::int64_t v) { s.soundSetting = v; }},
        {"badgeSetting", [](Application&, Settings& s, std::int64_t v) { s.badgeSetting = v; }},
        {"alertSetting", [](Application&, Settings& s, std::int64_t v) { s.alertSetting = v; }},
        {"notificationCenterSetting",
         [](Application&, Settings& s, std::int64_t v) { s.notificationCenterSetting = v; }},
        {"lockScreenSetting", [](Application&, Settings& s, std::int64_t v) { s.lockScreenSetting = v; }},
        {"carPlaySetting", [](Application&, Settings& s, std::int64_t v) { s.carPlaySetting = v; }},
        {"alertStyle", [](Application&, Settings& s, std::int64_t v) { s.alertStyle = v; }},
        {"types",
         [](Application& a, Settings&, std::int64_t v) { a.setUserNotificationTypes(static_cast<std::uint64_t>(v)); }},
        {"backgroundRefreshStatus",
         [](Application& a, Settings&, std::int64_t v) {
             a.setBackgroundRefreshStatus(static_cast<UIBackgroundRefreshStatus>(v));
         }},
    };
    return table;
}

Value notificationSettings(Phone& phone, const Dictionary& line) {
    const auto& given = dictionaryFrom(requiredField(line, "set"), "set");
    for (const auto& [name, value] : given) {
        if (!settingSetters().contains(name)) throw BadLine("notificationSettings has no " + name);
        integerFrom(value, name);
    }
    auto& center = phone.device().simulatedUserNotificationCenter();
    auto settings = center.notificationSettings();
    for (const auto& [name, value] : given) {
        settingSetters().at(name)(phone.device().simulatedApplication(), settings, integerFrom(value, name));
    }
    center.setNotificationSettings(settings);
    return nullptr;
}

}  // namespace

Phone::Commands notificationCommands() {
    return {{"push", push},
            {"token", token},
            {"legacySettings", legacySettings},
            {"performFetch", fetchInBackground},
            {"schedulePlatform", schedulePlatform},
            {"openNotification", openNotification},
            {"notificationSettings", notificationSettings}};
}

}  // namespace vorlane::phone

// Commands for the library's pure operations, by labelled name.

#include <functional>

#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSString+VLHTML.h"
#include "Categories/NSString+VLHash.h"
#include "Categories/UIColor+VLHexColors.h"
#include "Notifications/VLAuthorisationHelper_iOS10To11.h"
#include "Notifications/VLAuthorisationHelper_iOS12Plus.h"
#include "Notifications/VLInterstitialService.h"
#include "Notifications/VLRemoteNotificationService.h"
#include "Notifications/VLUserNotificationCentre_iOS10Plus.h"
#include "Notifications/VLUserNotificationCentre_iOS8To9.h"
#include "Platform/Platform.h"
#include "Public/VLDeviceTokenHelper.h"
#include "Public/VLLog.h"
#include "Public/VLUserNotificationSettings.h"
#include "Simulator/Phone/PhoneCommands.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

using Helper = std::function<Value(const Array& arguments)>;

const Value& argument(const Array& arguments, std::size_t place) {
    if (place >= arguments.size()) throw BadLine("missing argument " + std::to_string(place + 1));
    return arguments[place];
}

/// Helpers from a number to a string, and from a string to a number.
Helper fromNumber(const std::function<std::string(std::int64_t)>& convert) {
    return
        [convert](const Array& arguments) { return Value(convert(integerFrom(argument(arguments, 0), "argument 1"))); };
}
Helper fromText(const std::function<Value(const std::string&)>& convert) {
    return [convert](const Array& arguments) { return convert(stringFrom(argument(arguments, 0), "argument 1")); };
}

/// A helper from a number to a number.
Helper fromInteger(const std::function<std::int64_t(std::int64_t)>& convert) {
    return
        [convert](const Array& arguments) { return Value(convert(integerFrom(argument(arguments, 0), "argument 1"))); };
}

Value colourValue(const UIColor& colour) {
    return Dictionary{{"red", colour.red}, {"green", colour.green}, {"blue", colour.blue}, {"alpha", colour.alpha}};
}

/// Calls the helper for the phone's platform generation.
template <class Ask>
auto withAuthorisationHelper(Ask ask) {
    constexpr double kProvisionalVersion = 12.0;
    if (Platform::current().systemVersion() >= kProvisionalVersion) return ask(VLAuthorisationHelper_iOS12Plus());
    return ask(VLAuthorisationHelper_iOS10To11());
}

const std::map<std::string, Helper>& helpers() {
    using Settings = VLUserNotificationSettings;
    static const std::map<std::string, Helper> table = {
        {"logLevelToString:", fromNumber([](std::int64_t level) {
             return VLLog::logLevelToString(static_cast<VLLogLevel>(static_cast<std::uint64_t>(level)));
         })},
        {"stringToLogLevel:", fromText([](const std::string& text) {
             return Value(static_cast<std::uint64_t>(VLLog::stringToLogLevel(text)));
         })},
        {"hexStringToData:", fromText([](const std::string& text) {
             return valueOf(std::optional(VLDeviceTokenHelper::hexStringToData(text)));
         })},
        {"deviceTokenToString:",
         [](const Array& arguments) {
             return Value(
                 VLRemoteNotificationService::deviceTokenToString(dataFrom(argument(arguments, 0), "argument 1")));
         }},
        {"UNAlertStyleToVLAlertStyle:", fromInteger(VLUserNotificationCentre_iOS10Plus::UNAlertStyleToVLAlertStyle)},
        {"UNNotifSettingToVLNotifSetting:",
         fromInteger(VLUserNotificationCentre_iOS10Plus::UNNotifSettingToVLNotifSetting)},
        {"VLAuthOptionsToUIUserNotificationType:", fromInteger([](std::int64_t options) {
             return static_cast<std::int64_t>(VLUserNotificationCentre_iOS8To9::VLAuthOptionsToUIUserNotificationType(
                 static_cast<std::uint64_t>(options)));
         })},
        {"UNAuthStatusToVLAuthStatus:", fromInteger([](std::int64_t status) {
             return withAuthorisationHelper(
                 [&](const auto& helper) { return helper.UNAuthStatusToVLAuthStatus(status); });
         })},
        {"VLAuthOptionsToUNAuthOptions:", fromInteger([](std::int64_t options) {
             return withAuthorisationHelper([&](const auto& helper) {
                 return static_cast<std::int64_t>(
                     helper.VLAuthOptionsToUNAuthOptions(static_cast<std::uint64_t>(options)));
             });
         })},
        {"isProvisionalAuthorisationSupported",
         [](const Array& /*arguments*/) {
             return Value(withAuthorisationHelper(
                 [](const auto& helper) { return helper.isProvisionalAuthorisationSupported(); }));
         }},
        {"stringForPlacement:",
         [](const Array& arguments) {
             const auto placement = integerFrom(argument(arguments, 0), "argument 1");
             return valueOf(VLInterstitialService::stringForPlacement(
                 static_cast<VLInterstitialPlacement>(static_cast<std::uint64_t>(placement))));
         }},
        {"vl_colorWithHexString:alpha:",
         [](const Array& arguments) {
             const auto alpha = numberFrom(argument(arguments, 1), "argument 2");
             return colourValue(
                 vl_colorWithHexString(stringFrom(argument(arguments, 0), "argument 1"), static_cast<float>(alpha)));
         }},
        {"vl_prependHTMLStringWithViewportMetaTag",
         fromText([](const std::string& text) { return Value(vl_prependHTMLStringWithViewportMetaTag(text)); })},
        {"vl_md5", fromText([](const std::string& text) { return Value(vl_md5(text)); })},
        {"vl_unescapeHTML", fromText([](const std::string& text) { return Value(vl_unescapeHTML(text)); })},
        {"authorisationStatusToString:", fromNumber(Settings::authorisationStatusToString)},
        {"stringToAuthorisationStatus:", fromText(Settings::stringToAuthorisationStatus)},
        {"notificationSettingToString:", fromNumber(Settings::notificationSettingToString)},
        {"stringToNotificationSetting:", fromText(Settings::stringToNotificationSetting)},
        {"alertStyleToString:", fromNumber(Settings::alertStyleToString)},
        {"stringToAlertStyle:", fromText(Settings::stringToAlertStyle)},
    };
    return table;
}

Value help(Phone& /*phone*/, const Dictionary& line) {
    const auto name = stringFrom(requiredField(line, "name"), "name");
    const auto helper = helpers().find(name);
    if (helper == helpers().end()) throw BadLine("unknown helper " + name);
    const auto* arguments = arrayForKey(line, "args");
    return helper->second(arguments ? *arguments : Array());
}

}  // namespace

Phone::Commands helperCommands() { return {{"helper", help}}; }

}  // namespace vorlane::phone

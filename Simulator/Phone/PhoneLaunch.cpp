#include "Simulator/Phone/PhoneLaunch.h"

#include "Categories/NSDictionary+VLLookup.h"
#include "Platform/UIApplication.h"
#include "Simulator/Phone/Phone.h"
#include "Simulator/Phone/PhoneNotifications.h"
#include "Simulator/Phone/PhoneScreen.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

VLSDKOptions presetFrom(const Dictionary& line) {
    const auto* preset = valueForKey(line, "preset");
    if (!preset) return {};
    const auto name = stringFrom(*preset, "preset");
    if (name == "default") return VLSDKOptions::defaultOptions();
    if (name == "development") return VLSDKOptions::developmentOptions();
    throw BadLine("preset must be default or development");
}

/// An object is used unchanged, so that a test can launch with any content.
Value launchNotification(Phone& phone, const Value& given) {
    return given.is_number() ? Value(notificationWithHandle(phone, given).toDictionary()) : given;
}

VLLogLevel logLevelFrom(const Value& value) {
    return static_cast<VLLogLevel>(static_cast<std::uint64_t>(integerFrom(value, "logLevel")));
}

}  // namespace

VLSDKOptions sdkOptionsFrom(Phone& phone, const Dictionary& line) {
    auto options = presetFrom(line);
    if (phone.options().logLevel) options.setLogLevel(*phone.options().logLevel);
    const auto* field = valueForKey(line, "options");
    if (!field) return options;
    const auto& named = dictionaryFrom(*field, "options");
    if (const auto* key = valueForKey(named, "appKey")) options.setAppKey(optionalStringFrom(*key, "appKey"));
    if (const auto* level = valueForKey(named, "logLevel")) options.setLogLevel(logLevelFrom(*level));
    if (const auto* interstitial = valueForKey(named, "appOpenInterstitial")) {
        options.setAppOpenInterstitial(viewControllerFrom(phone, *interstitial, "appOpenInterstitial"));
    }
    if (const auto* provides = valueForKey(named, "providesAppNotificationSettings")) {
        options.setProvidesAppNotificationSettings(booleanFrom(*provides, "providesAppNotificationSettings"));
    }
    return options;
}

std::optional<Dictionary> launchOptionsFrom(Phone& phone, const Value& value) {
    if (value.is_null()) return std::nullopt;
    Dictionary options;
    for (const auto& [name, given] : dictionaryFrom(value, "launchOptions")) {
        if (name == "remote") {
            options[UIApplicationLaunchOptionsRemoteNotificationKey] = given;
        } else if (name == "local") {
            options[UIApplicationLaunchOptionsLocalNotificationKey] = launchNotification(phone, given);
        } else {
            throw BadLine("launchOptions has remote and local, not " + name);
        }
    }
    return options;
}

}  // namespace vorlane::phone

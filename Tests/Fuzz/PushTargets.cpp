#include <optional>
#include <string>

#include "Categories/NSDictionary+VLJSON.h"
#include "Tests/Fuzz/FuzzPhone.h"
#include "Tests/Fuzz/FuzzTarget.h"

namespace vorlane::fuzz {

namespace {

std::optional<Dictionary> objectIn(std::string_view input) {
    std::optional<NSError> error;
    return vl_dictionaryWithJSON(std::string(input), error);
}

}  // namespace

void fuzzPush(std::string_view input) {
    const auto payload = objectIn(input);
    if (!payload) return;
    FuzzPhone device;
    device.start();
    const auto application = device.phone().application();
    Vorlane::didReceiveRemoteNotification(application, *payload);
    application->willResignActive();
    Vorlane::didReceiveRemoteNotification(application, *payload);
    UILocalNotification notification;
    notification.userInfo = *payload;
    Vorlane::didReceiveLocalNotification(application, notification);
    Vorlane::cancelPendingLocalNotification(notification);
    require(device.phone().settle(), "the library comes to rest");
}

void fuzzLaunchOptions(std::string_view input) {
    const auto payload = objectIn(input);
    if (!payload) return;
    const auto launchWith = [](const Dictionary& launchOptions) {
        FuzzPhone device;
        device.start(launchOptions);
    };
    launchWith(*payload);
    launchWith({{UIApplicationLaunchOptionsRemoteNotificationKey, *payload}});
    launchWith({{UIApplicationLaunchOptionsLocalNotificationKey, *payload}});
}

void fuzzDeepLink(std::string_view input) {
    const auto url = NSURL::URLWithString(std::string(input));
    if (!url) return;
    FuzzPhone device;
    device.start();
    Vorlane::openVorlaneDeepLink(url);
    require(device.phone().settle(), "the library comes to rest");
}

}  // namespace vorlane::fuzz

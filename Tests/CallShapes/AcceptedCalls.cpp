#include "Tests/CallShapes/AcceptedCalls.h"

#include "Public/Vorlane.h"

namespace vorlane {

namespace {

/// One string in every form.
struct Strings {
    const char* pointer = "pointer";
    const char* nullPointer = nullptr;
    std::string string = "string";
    std::string_view view = "view";
    std::optional<std::string> some = "some";
    std::optional<std::string> none;
};

void startUp(const std::shared_ptr<UIApplication>& application) {
    auto options = VLSDKOptions::developmentOptions();
    options.setAppKey("0123456789abcdef0123456789abcdef");
    Vorlane::setURLs(nullptr);
    Vorlane::setURLs({});
    Vorlane::setURLs(std::make_shared<VLURLsProduction>());
    Vorlane::initialiseSDKWithApplication(application, std::nullopt, options);
    Vorlane::initialiseSDKWithApplication(application, nullptr, options);
    Vorlane::initialiseSDKWithApplication(application, {}, options);
    Vorlane::initialiseSDKWithApplication(
        application, {{UIApplicationLaunchOptionsRemoteNotificationKey, {{"p", "hash"}}}}, options);
}

void identities(const Strings& strings) {
    Vorlane::setTrackingId("literal");
    Vorlane::setTrackingId(strings.pointer);
    Vorlane::setTrackingId(strings.nullPointer);
    Vorlane::setTrackingId(strings.string);
    Vorlane::setTrackingId(strings.view);
    Vorlane::setTrackingId(strings.some);
    Vorlane::setTrackingId(strings.none);
    Vorlane::setTrackingId(std::nullopt);
    Vorlane::setTrackingId(nullptr);
    Vorlane::setTrackingId(Vorlane::trackingId());
    Vorlane::setPhash("literal");
    Vorlane::setPhash(strings.pointer);
    Vorlane::setPhash(strings.nullPointer);
    Vorlane::setPhash(strings.string);
    Vorlane::setPhash(strings.view);
    Vorlane::setPhash(strings.some);
    Vorlane::setPhash(nullptr);
    Vorlane::setPhash(Vorlane::phash());
    Vorlane::setPhash(std::nullopt);
}

void eventsWithLabels(const Strings& strings) {
    Vorlane::registerEventWithType("type", "label");
    Vorlane::registerEventWithType(strings.pointer, strings.pointer);
    Vorlane::registerEventWithType(strings.nullPointer, strings.nullPointer);
    Vorlane::registerEventWithType(strings.string, strings.string);
    Vorlane::registerEventWithType(strings.view, strings.view);
    Vorlane::registerEventWithType(std::string("type"), strings.some);
    Vorlane::registerEventWithType("type", strings.none);
    Vorlane::registerEventWithType("type", std::nullopt);
    Vorlane::registerEventWithType("type", nullptr);
    Vorlane::registerEventWithType("type", "label", "phash");
    Vorlane::registerEventWithType("type", strings.view, strings.string);
    Vorlane::registerEventWithType("type", nullptr, nullptr);
    Vorlane::registerEventWithType("type", std::nullopt, strings.some);
}

void eventsWithData(const Strings& strings) {
    Vorlane::registerEventWithType("type", {});
    Vorlane::registerEventWithType("type", {{"drink", "coffee"}});
    Vorlane::registerEventWithType("type", {{"drink", "coffee"}, {"size", "small"}});
    Vorlane::registerEventWithType("type", {{"int", 2},
                                            {"unsigned", 2U},
                                            {"double", 2.5},
                                            {"float", 2.5F},
                                            {"bool", true},
                                            {"null", nullptr},
                                            {"string", strings.string},
                                            {"view", strings.view},
                                            {"pointer", strings.pointer}});
    Vorlane::registerEventWithType("type", {{strings.string, 1}, {strings.view, 2}, {strings.pointer, 3}});
    Vorlane::registerEventWithType("type", {{"nested", {{"milk", true}, {"sugar", {{"spoons", 1}}}}}, {"empty", {}}});
    Vorlane::registerEventWithType("type", {}, "phash");
    Vorlane::registerEventWithType("type", {{"drink", "coffee"}}, "phash");
    Vorlane::registerEventWithType("type", {{"drink", "coffee"}}, strings.view);
    Vorlane::registerEventWithType("type", {{"drink", "coffee"}}, strings.none);
    Vorlane::registerEventWithType("type", {{"drink", "coffee"}}, std::nullopt);
    Vorlane::registerEventWithType("type", {{"drink", "coffee"}}, nullptr);
}

void tags(const Strings& strings) {
    const auto handler = [](std::optional<NSError> error) { static_cast<void>(error); };
    Vorlane::getTag("name", [](std::optional<std::string>, std::optional<NSError>) {});
    Vorlane::getTag(strings.string, [](const auto&, const auto&) {});
    Vorlane::getTag(strings.view, nullptr);
    Vorlane::getTag(strings.some, {});
    Vorlane::getTag(std::nullopt, Vorlane::TagHandler());
    Vorlane::getTag(nullptr, nullptr);
    Vorlane::setTag("name", "value", VLTagType::String, handler);
    Vorlane::setTag(strings.string, strings.view, VLTagType::Numeric, [](const auto&) {});
    Vorlane::setTag(strings.pointer, strings.nullPointer, VLTagType::Timestamp, nullptr);
    Vorlane::setTag(strings.view, strings.some, VLTagType::String, {});
    Vorlane::setTag("name", std::nullopt, VLTagType::String, Vorlane::ErrorHandler());
    Vorlane::setTag(nullptr, nullptr, VLTagType::String, nullptr);
    Vorlane::deleteAllTagsWithCompletionHandler(handler);
    Vorlane::deleteAllTagsWithCompletionHandler(nullptr);
    Vorlane::deleteAllTagsWithCompletionHandler({});
}

void pushNotifications(const std::shared_ptr<UIApplication>& application) {
    Vorlane::didRegisterForRemoteNotificationsWithDeviceToken(application, {0xAB, 0xCD}, nullptr);
    Vorlane::didRegisterForRemoteNotificationsWithDeviceToken(application, VLDeviceTokenHelper::hexStringToData("abcd"),
                                                              [](const auto&) {});
    Vorlane::didRegisterForRemoteNotificationsWithDeviceToken(application, {}, {});
    Vorlane::unregisterFromRemoteNotificationsWithCompletionHandler([](bool, std::optional<NSError>) {});
    Vorlane::unregisterFromRemoteNotificationsWithCompletionHandler(nullptr);
    Vorlane::unregisterFromRemoteNotificationsWithCompletionHandler({});
    Vorlane::didRegisterUserNotificationSettings(application, {});
    Vorlane::performFetchWithCompletionHandler(application, [](UIBackgroundFetchResult) {});
    Vorlane::getNotificationSettingsWithCompletionHandler([](const VLUserNotificationSettings&) {});
    Vorlane::getNotificationSettingsWithCompletionHandler(nullptr);
}

void localNotifications(const std::shared_ptr<UIApplication>& application, const Strings& strings) {
    Vorlane::scheduleLocalNotification("text", 1, "campaign", 4e9, {{"order", 7}}, "View");
    Vorlane::scheduleLocalNotification(strings.string, 0, strings.view, std::nullopt, std::nullopt, std::nullopt);
    Vorlane::scheduleLocalNotification(strings.view, 0, strings.none, 0, nullptr, strings.pointer);
    const auto notification = Vorlane::scheduleLocalNotification(strings.pointer, 0, nullptr, {}, {}, nullptr);
    if (notification) Vorlane::cancelPendingLocalNotification(*notification);
    Vorlane::cancelPendingLocalNotification(UILocalNotification());
    Vorlane::cancelPendingLocalNotification({});
    Vorlane::didReceiveLocalNotification(application, UILocalNotification());
}

void screens() {
    Vorlane::presentInterstitialWithPlacement(VLInterstitialPlacement::Feedback, nullptr, true, nullptr);
    Vorlane::presentInterstitialWithPlacement(VLInterstitialPlacement::Feedback, std::make_shared<UIViewController>(),
                                              false, [](bool, const auto&) {});
    Vorlane::openVorlaneDeepLink(NSURL::URLWithString("vorlane://location-no"));
    Vorlane::openVorlaneDeepLink(*NSURL::URLWithString("vorlane://location-no"));
    Vorlane::openVorlaneDeepLink(std::nullopt);
    Vorlane::openVorlaneDeepLink({});
    Vorlane::askForPermission(VLPermissions::Notifications);
    Vorlane::askForPermission(VLPermissions::LocationAlways, nullptr);
    Vorlane::askForPermission(VLPermissions::LocationWhenInUse, {});
    Vorlane::askForPermission(VLPermissions::Notifications, std::make_shared<UIViewController>());
}

void inbox() {
    Vorlane::getInboxMessagesWithCompletionHandler([](const auto& messages, std::size_t) {
        for (const auto& message : messages) static_cast<void>(message->subject());
    });
    Vorlane::getInboxMessagesWithCompletionHandler(nullptr);
    Vorlane::getInboxMessagesWithCompletionHandler({});
    Vorlane::openInboxMessage(nullptr, nullptr);
    Vorlane::openInboxMessage({}, [](const auto&) {});
    Vorlane::deleteInboxMessage(nullptr, {});
    Vorlane::deleteInboxMessage({}, [](std::optional<NSError>) {});
}

void container(const Strings& strings) {
    Vorlane::setContainer("name", "1.0", "2.0");
    Vorlane::setContainer(strings.string, strings.view, strings.pointer);
    Vorlane::setContainer(std::nullopt, nullptr, strings.none);
}

/// The log takes lines and sinks without the definition of `Value`.
void log() {
    class Sink : public VLLogger {
        void logMessage(const std::string&, const std::optional<Value>&, VLLogLevel) override {}
    };
    const auto sink = std::make_shared<Sink>();
    VLLog::sharedInstance().addLogger(sink);
    logMessage(VLLogLevel::Info, "message");
    VLLog::sharedInstance().removeLogger(sink);
}

}  // namespace

void callEveryShape(const std::shared_ptr<UIApplication>& application) {
    const Strings strings;
    startUp(application);
    identities(strings);
    eventsWithLabels(strings);
    eventsWithData(strings);
    tags(strings);
    pushNotifications(application);
    localNotifications(application, strings);
    screens();
    inbox();
    container(strings);
    log();
}

}  // namespace vorlane

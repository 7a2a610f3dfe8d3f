// Commands that return the phone's state.

#include <functional>

#include "Platform/NSPropertyListSerialization.h"
#include "Public/Vorlane.h"
#include "Simulator/Phone/PhoneCommands.h"
#include "Simulator/Phone/PhoneLocation.h"
#include "Simulator/Phone/PhoneNotifications.h"
#include "Simulator/Phone/PhoneScreen.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

Value settings(Phone& phone) {
    const auto path = phone.device().documentsFolder() + "/VLLibSettings.plist";
    return NSPropertyListSerialization::dictionaryWithContentsOfFile(path).value_or(Dictionary());
}

Value timers(Phone& phone) {
    Array seconds;
    for (const auto timer : phone.device().timers()) seconds.emplace_back(timer);
    return seconds;
}

Value backgroundTasks(Phone& phone) {
    Array tasks;
    for (const auto& [identifier, name] : phone.device().application()->backgroundTasks()) {
        tasks.push_back(Dictionary{{"identifier", identifier}, {"name", name}});
    }
    return tasks;
}

Value urls(Phone& /*phone*/) {
    const auto set = Vorlane::getURLs();
    return set ? valueOf(*set) : Value();
}

Value constants(Phone& /*phone*/) {
    return Dictionary{{"VorlaneVersionString", VorlaneVersionString},
                      {"VorlaneVersionNumber", VorlaneVersionNumber},
                      {"VL_LOG_STRING_OFF", VL_LOG_STRING_OFF},
                      {"VL_LOG_STRING_ERROR", VL_LOG_STRING_ERROR},
                      {"VL_LOG_STRING_WARN", VL_LOG_STRING_WARN},
                      {"VL_LOG_STRING_INFO", VL_LOG_STRING_INFO},
                      {"VL_LOG_STRING_DEBUG", VL_LOG_STRING_DEBUG},
                      {"VLErrorDomainTag", VLErrorDomainTag},
                      {"VLErrorDomainInbox", VLErrorDomainInbox},
                      {"VLErrorDomainNetwork", VLErrorDomainNetwork},
                      {"VLErrorDomainInterstitial", VLErrorDomainInterstitial},
                      {"VLErrorDomainDeviceRegistration", VLErrorDomainDeviceRegistration},
                      {"VL_HTTP_GET", VL_HTTP_GET},
                      {"VL_HTTP_POST", VL_HTTP_POST},
                      {"VL_HTTP_PUT", VL_HTTP_PUT},
                      {"VL_HTTP_DELETE", VL_HTTP_DELETE},
                      {"VL_NOTIFICATION_KEY_PHASH", VL_NOTIFICATION_KEY_PHASH},
                      {"VL_NOTIFICATION_KEY_ACTION", VL_NOTIFICATION_KEY_ACTION},
                      {"VL_NOTIFICATION_ACTION_INBOX", VL_NOTIFICATION_ACTION_INBOX},
                      {"VLNotificationInterstitialWasDismissed", VLNotificationInterstitialWasDismissed},
                      {"VIEWPORT_META_TAG", VIEWPORT_META_TAG},
                      {"VLCONFIGSERVICEGEO", VLCONFIGSERVICEGEO},
                      {"VLCONFIGSERVICEBEACON", VLCONFIGSERVICEBEACON},
                      {"VLCONFIGSERVICEPERMISSION", VLCONFIGSERVICEPERMISSION},
                      {"VLCONFIGSERVICEINBOX", VLCONFIGSERVICEINBOX}};
}

Value query(Phone& phone, const Dictionary& line) {
    static const std::map<std::string, std::function<Value(Phone&)>> subjects = {
        {"settings", settings},
        {"timers", timers},
        {"scheduledNotifications", scheduledNotifications},
        {"deliveredNotifications", deliveredNotifications},
        {"monitoredRegions", monitoredRegions},
        {"rangedRegions", rangedRegions},
        {"prompts", openPrompts},
        {"presented", presentedViewControllers},
        {"backgroundTasks", backgroundTasks},
        {"time", [](Phone& asked) { return Value(asked.device().now()); }},
        {"documents", [](Phone& asked) { return Value(asked.device().documentsFolder()); }},
        {"urls", urls},
        {"constants", constants},
    };
    const auto what = stringFrom(requiredField(line, "what"), "what");
    const auto subject = subjects.find(what);
    if (subject == subjects.end()) throw BadLine("unknown query " + what);
    return subject->second(phone);
}

}  // namespace

Phone::Commands queryCommands() { return {{"query", query}}; }

}  // namespace vorlane::phone

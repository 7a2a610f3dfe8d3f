// Commands that launch the application and change its state.

#include "Categories/NSDictionary+VLLookup.h"
#include "Public/Vorlane.h"
#include "Simulator/Phone/PhoneCommands.h"
#include "Simulator/Phone/PhoneLaunch.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

UIApplicationState stateFrom(const Value& value) {
    const auto text = stringFrom(value, "state");
    if (text == "inactive") return UIApplicationState::Inactive;
    if (text == "active") return UIApplicationState::Active;
    if (text == "background") return UIApplicationState::Background;
    throw BadLine("state must be inactive, active or background");
}

Value launch(Phone& phone, const Dictionary& line) {
    const auto* state = valueForKey(line, "state");
    const auto* launchOptions = valueForKey(line, "launchOptions");
    const auto options = sdkOptionsFrom(phone, line);
    const auto given = launchOptions ? launchOptionsFrom(phone, *launchOptions) : std::nullopt;
    auto& application = phone.device().simulatedApplication();
    application.setApplicationState(state ? stateFrom(*state) : UIApplicationState::Inactive);
    Vorlane::initialiseSDKWithApplication(phone.device().application(), given, options);
    return nullptr;
}

Value changeState(Phone& phone, const Dictionary& line) {
    using Report = void (*)(UIApplication&);
    static const std::map<std::string, Report> reports = {
        {"active", [](UIApplication& application) { application.didBecomeActive(); }},
        {"inactive", [](UIApplication& application) { application.willResignActive(); }},
        {"background", [](UIApplication& application) { application.didEnterBackground(); }},
        {"foreground", [](UIApplication& application) { application.willEnterForeground(); }},
        {"terminate", [](UIApplication& application) { application.willTerminate(); }},
    };
    const auto report = reports.find(stringFrom(requiredField(line, "to"), "to"));
    if (report == reports.end()) throw BadLine("to must be active, inactive, background, foreground or terminate");
    report->second(phone.device().simulatedApplication());
    return nullptr;
}

Value expireBackgroundTasks(Phone& phone, const Dictionary& /*line*/) {
    phone.device().simulatedApplication().expireBackgroundTasks();
    return nullptr;
}

Value quit(Phone& phone, const Dictionary& /*line*/) {
    phone.quit();
    return nullptr;
}

}  // namespace

Phone::Commands lifeCycleCommands() {
    return {
        {"launch", launch}, {"state", changeState}, {"expireBackgroundTasks", expireBackgroundTasks}, {"quit", quit}};
}

}  // namespace vorlane::phone

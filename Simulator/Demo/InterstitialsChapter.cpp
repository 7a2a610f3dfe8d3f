#include "Simulator/Demo/Chapters.h"

namespace vorlane::demo {

namespace {

constexpr double kOneDay = 86400;

Value query(Stage& stage, const std::string& what) { return stage.phone().perform({{"do", "query"}, {"what", what}}); }

std::size_t presented(Stage& stage) { return query(stage, "presented").size(); }

bool isPrompted(Stage& stage) { return !query(stage, "prompts").empty(); }

Value lastPlacement(Stage& stage) {
    const auto requests = stage.service().requests("interstitial");
    return requests.empty() ? Value() : requests.back()["path"];
}

bool asked(Stage& stage, const std::string& placement) {
    const auto path = lastPlacement(stage);
    return path.is_string() && path.get<std::string>().ends_with("/interstitial/" + placement);
}

/// Whether the page of the placement has a button with this link.
bool hasLink(Stage& stage, const std::string& placement, const std::string& link) {
    const auto page = stage.service().get("interstitials/" + Stage::appKey() + "/" + placement);
    return page["html"].get<std::string>().find("href=\"" + link + "\"") != std::string::npos;
}

void greet(Stage& stage) {
    stage.play("launch, with an interstitial for each opening",
               {{"do", "launch"},
                {"preset", "development"},
                {"options", Dictionary{{"appOpenInterstitial", "interstitialWithMetadata"}}}});
    stage.play("the application becomes active", {{"do", "state"}, {"to", "active"}});
    stage.promise("opening the application shows the page of its placement",
                  asked(stage, "App%20Open") && presented(stage) == 2);

    const auto second = stage.call(
        "the application shows its feedback form",
        "presentInterstitialWithPlacement:viewController:animated:completionHandler:", {1, "interstitial", true});
    stage.promise("a second interstitial is skipped while the first shows, though its page was fetched",
                  second == Array{false, nullptr} && asked(stage, "Feedback") && presented(stage) == 2);
    stage.play("the user closes the greeting", {{"do", "dismissInterstitial"}});
    stage.promise("after the dismissal the application's screen is back", presented(stage) == 1);
}

void askSoftly(Stage& stage, const std::string& what) {
    stage.call(what, "askForPermission:interstitialViewController:", {0, "interstitial"});
}

void sayNotNow(Stage& stage) {
    askSoftly(stage, "may we send notifications? (soft opt-in)");
    stage.promise("a soft opt-in precedes the system's prompt",
                  asked(stage, "Notification%20Prompt") && presented(stage) == 2 && !isPrompted(stage));
    stage.play("the user closes it", {{"do", "dismissInterstitial"}});
    const auto handled = stage.phone().call("openVorlaneDeepLink:", {"vorlane://notification-no"});
    stage.play("\"Not now\": vorlane://notification-no", {{"do", "settle"}});
    stage.promise("after a no the system shows no prompt", handled == Value(true) && !isPrompted(stage));

    stage.wait(3600);
    const auto requests = stage.service().requests("interstitial").size();
    askSoftly(stage, "an hour later, once more");
    stage.promise("a soft opt-in is refused when the last one was too recent",
                  presented(stage) == 1 && stage.service().requests("interstitial").size() == requests);
}

void sayYes(Stage& stage) {
    stage.play("a push token arrives", {{"do", "token"}, {"hex", "00ff10"}});
    stage.play("the user takes time to answer prompts",
               {{"do", "user"}, {"answers", Dictionary{{"notifications", "later"}}}});
    stage.wait(kOneDay);
    askSoftly(stage, "a day later, once more");
    stage.promise("a day later it is shown again", asked(stage, "Notification%20Prompt") && presented(stage) == 2);
    stage.play("the user closes it", {{"do", "dismissInterstitial"}});
    stage.call("\"Turn on\": vorlane://notification-yes", "openVorlaneDeepLink:", {"vorlane://notification-yes"});
    stage.promise("its button leads to the system's prompt",
                  hasLink(stage, "Notification%20Prompt", "vorlane://notification-yes") && isPrompted(stage));
    stage.play("the user allows it", {{"do", "answer"}, {"prompt", "notifications"}, {"with", "allow"}});
    const auto device = stage.lastPayload("deviceRegistration");
    stage.promise(
        "the service receives the new notification settings",
        !isPrompted(stage) && device["notification_settings.v2"]["ios"]["authorisation"] == Value("authorised"));
}

void followLinks(Stage& stage) {
    const auto isOurs = stage.phone().call("openVorlaneDeepLink:", {"vorlane://notification-settings-yes"});
    stage.play("a button's link: vorlane://notification-settings-yes", {{"do", "settle"}});
    const auto isForeign = stage.phone().call("openVorlaneDeepLink:", {"https://shop.example/sale"});
    stage.play("a link of the application's own: https://shop.example/sale", {{"do", "settle"}});
    stage.promise("the library follows its own links and leaves others to the application",
                  isOurs == Value(true) && isForeign == Value(false));
}

}  // namespace

void playInterstitials(Stage& stage) {
    stage.switchOn(Stage::Network::Available);
    greet(stage);
    sayNotNow(stage);
    sayYes(stage);
    followLinks(stage);
    stage.switchOff();
}

}  // namespace vorlane::demo

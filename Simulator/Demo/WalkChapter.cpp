#include <fmt/format.h>

#include <algorithm>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Demo/Chapters.h"
#include "Simulator/Demo/Walk.h"

namespace vorlane::demo {

namespace {

constexpr const char* kUUID = "2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6";
constexpr double kStreet = 10.75;

Value regionAt(const std::string& name, double latitude, double radius) {
    return Dictionary{{"id", name},           {"name", name},     {"latitude", latitude},
                      {"longitude", kStreet}, {"radius", radius}, {"plotwise_id", name + "-segment"}};
}

/// Sets the messages for entering and leaving a region.
void setContent(Stage& stage, const std::string& region, const std::string& onEnter, const std::string& onExit) {
    const auto set = [&](const char* transition, const std::string& text) {
        stage.service().put(fmt::format("geoContent/{}/{}/{}-segment", Stage::appKey(), transition, region),
                            Dictionary{{"pushtext", text}, {"phash", fmt::format("{}-{}", transition, region)}});
    };
    set("enter", onEnter);
    set("exit", onExit);
}

void setGeofences(Stage& stage) {
    const Value regions =
        Array{regionAt("home", 59.9110, 80), regionAt("cafe", 59.9140, 60), regionAt("park", 59.9170, 100)};
    stage.service().put("regions/" + Stage::appKey(), Dictionary{{"regions", regions}});
    setContent(stage, "home", "Welcome home", "Have you got your keys?");
    setContent(stage, "cafe", "A coffee, 50% off?", "See you tomorrow");
    setContent(stage, "park", "The kiosk is open", "Come again");
}

/// A rule for every beacon of the park, with one message an hour, and messages for two of them.
Value beaconConfiguration(Stage& stage) {
    for (const auto& [minor, name] : {std::pair{1, "kiosk"}, std::pair{2, "fountain"}}) {
        stage.service().put(
            fmt::format("beaconContent/{}/{}/1/{}", Stage::appKey(), kUUID, minor),
            Dictionary{{"pushtext", fmt::format("Here is the {}", name)}, {"phash", fmt::format("near-{}", name)}});
    }
    const Value rule = Dictionary{
        {"type", "message;data"}, {"beacon_type", "ibeacon"}, {"uuid", kUUID},      {"major", 1},      {"minor", "*"},
        {"priority", 1},          {"alert_range", "any"},     {"message_count", 1}, {"time_period", 1}};
    return Dictionary{{"beacon_data", Value(Array{rule})}, {"auto_beacon_notify", true}, {"cooloff_period_minutes", 1}};
}

void launch(Stage& stage) {
    setGeofences(stage);
    stage.service().put(
        "config/" + Stage::appKey(),
        Dictionary{{"services", Dictionary{{"geo_regions", true}, {"beacon", true}}},
                   {"configs", Dictionary{{"geo_regions", Dictionary{}}, {"beacon", beaconConfiguration(stage)}}}});
    stage.switchOn(Stage::Network::Available);
    stage.play("the user allows the location", {{"do", "locationAuthorisation"}, {"status", 3}});
    stage.play("launch", {{"do", "launch"}, {"preset", "development"}});
    stage.play("the application becomes active", {{"do", "state"}, {"to", "active"}});
    stage.play("the user puts the phone away", {{"do", "state"}, {"to", "background"}});
}

Array shownNotifications(Stage& stage) {
    return stage.phone().perform({{"do", "query"}, {"what", "deliveredNotifications"}}).get<Array>();
}

/// The number of notifications with this phash that were shown.
std::ptrdiff_t timesShown(Stage& stage, const std::string& phash) {
    const auto notifications = shownNotifications(stage);
    return std::count_if(notifications.begin(), notifications.end(), [&phash](const Value& notification) {
        const auto* info = dictionaryForKey(notification.get_ref<const Dictionary&>(), "userInfo");
        return info && stringForKey(*info, "p") == phash;
    });
}

bool isShownOnce(Stage& stage, const std::string& region) {
    return timesShown(stage, "enter-" + region) == 1 && timesShown(stage, "exit-" + region) == 1;
}

void walkPastHome(Stage& stage, Walk& walk) {
    walk.step("waits for the bus", 10, {59.9098, kStreet});
    const auto watched = stage.phone().perform({{"do", "query"}, {"what", "monitoredRegions"}});
    stage.promise("three geofences and the beacons are monitored", watched.size() == 4);
    walk.step("walks past home", 60, {59.9110, kStreet});
    walk.step("reaches the corner", 120, {59.9125, kStreet});
    stage.promise("entering and leaving a geofence shows the service's message, with its phash",
                  isShownOnce(stage, "home"));
}

void waverAtTheCafe(Stage& stage, Walk& walk) {
    for (int i = 0; i < 3; ++i) {
        walk.step("stands at the door of the cafe", 20, {59.9136, kStreet});
        walk.step("looks for the wallet on the pavement", 20, {59.9133, kStreet});
    }
    const auto requests = stage.service().requests("geoContent").size();
    stage.promise("a flapping geofence requests and shows each message once",
                  isShownOnce(stage, "cafe") && requests == 4);
}

void strollThroughThePark(Stage& stage, Walk& walk) {
    walk.step("enters the park", 200, {59.9162, kStreet});
    walk.step("is at the kiosk", 60, {59.9170, kStreet});
    walk.step("is at the fountain", 60, {59.9174, kStreet});
    walk.step("goes back to the kiosk", 120, {59.9170, kStreet});
    stage.promise("a limit of one message admits two messages and no third",
                  timesShown(stage, "near-kiosk") == 1 && timesShown(stage, "near-fountain") == 1 &&
                      stage.service().requests("beaconContent").size() == 3);
    stage.promise("beyond the limit no message is requested",
                  stage.lastPayload("beaconContent")["getContent"] == Value(false));
    walk.step("eats an ice-cream there", 30, {59.9170, kStreet});
    stage.promise("a beacon that cools off is ignored", stage.service().requests("beaconContent").size() == 3);
    walk.step("leaves the park", 90, {59.9185, kStreet});
}

void promiseTheVisit(Stage& stage) {
    const auto visits = stage.service().get("beaconSessions")["beaconSessions"];
    const bool isOne = visits.size() == 1 && visits[0]["startTime"].is_number() && visits[0]["endTime"].is_number();
    stage.promise("the visit to the beacons is reported with its start and its end, 300 s later",
                  isOne && visits[0]["endTime"].get<double>() - visits[0]["startTime"].get<double>() == 300'000);
}

/// The user opens the kiosk's message.
void openMessage(Stage& stage) {
    stage.play("the user takes out the phone", {{"do", "state"}, {"to", "foreground"}});
    for (const auto& notification : shownNotifications(stage)) {
        if (notification["userInfo"]["p"] != Value("near-kiosk")) continue;
        stage.play("the user opens the kiosk's message",
                   {{"do", "openNotification"}, {"handle", notification["handle"]}});
    }
    stage.play("the application becomes active", {{"do", "state"}, {"to", "active"}});
    stage.promise("the session carries the phash of the message that opened it",
                  stage.lastPayload("sessionStart")["phash"] == Value("near-kiosk"));
}

}  // namespace

void playWalk(Stage& stage) {
    launch(stage);
    Walk walk(stage, {{kUUID, 1, 1, {59.9170, kStreet}}, {kUUID, 1, 2, {59.9174, kStreet}}});
    walkPastHome(stage, walk);
    waverAtTheCafe(stage, walk);
    strollThroughThePark(stage, walk);
    stage.promise("each geofence showed its messages in both directions", isShownOnce(stage, "park"));
    stage.promise("the regions were fetched once for the whole walk",
                  stage.service().requests("geoRegions").size() == 1);
    promiseTheVisit(stage);
    openMessage(stage);
    stage.switchOff();
}

}  // namespace vorlane::demo

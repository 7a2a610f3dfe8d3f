#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Demo/Chapters.h"

namespace vorlane::demo {

namespace {

constexpr const char* kSchedule = "scheduleLocalNotification:badge:campaign:date:metadata:action:";

Value listOf(Stage& stage, const std::string& name) { return stage.service().get(name)[name]; }

Value scheduled(Stage& stage) { return stage.phone().perform({{"do", "query"}, {"what", "scheduledNotifications"}}); }
Value delivered(Stage& stage) { return stage.phone().perform({{"do", "query"}, {"what", "deliveredNotifications"}}); }

double now(Stage& stage) { return stage.phone().perform({{"do", "query"}, {"what", "time"}}).get<double>(); }

void allowNotifications(Stage& stage) {
    stage.play("the user allows notifications", {{"do", "notificationSettings"},
                                                 {"set", Dictionary{{"authorizationStatus", 2},
                                                                    {"soundSetting", 2},
                                                                    {"badgeSetting", 2},
                                                                    {"alertSetting", 2},
                                                                    {"notificationCenterSetting", 2},
                                                                    {"lockScreenSetting", 2},
                                                                    {"alertStyle", 1}}}});
    stage.play("the platform delivers a push token", {{"do", "token"}, {"hex", "00ab10"}});
    const auto device = listOf(stage, "devices")[0];
    stage.promise("the service receives the token and the notification settings",
                  device["token"] == Value("00ab10") && device["registered"] == Value(true) &&
                      device["notificationSettings"]["ios"].is_object());
}

void scheduleDueSoon(Stage& stage) {
    stage.service().put(
        "campaigns/sale",
        Dictionary{{"campaignId", "summer"},
                   {"splits", Value(Array{Dictionary{{"splitId", "a"}, {"messageText", "Half price!"}}})}});
    stage.call("local notification due in 30 s", kSchedule,
               {"A sale has begun", 1, "sale", now(stage) + 30, nullptr, nullptr});
    const auto list = scheduled(stage);
    stage.promise("a notification due soon receives its phash and text immediately",
                  list.size() == 1 && list[0]["alertBody"] == Value("Half price!") &&
                      list[0]["userInfo"]["p"] == listOf(stage, "splits")[0]["phash"]);
    stage.wait(30);
    stage.promise("the notification is shown on time", delivered(stage).size() == 1 && scheduled(stage).empty());
}

void scheduleDueLater(Stage& stage) {
    stage.call("local notification due in 10 minutes", kSchedule,
               {"The sale ends", 1, nullptr, now(stage) + 600, nullptr, nullptr});
    stage.promise("a notification due later is scheduled without a phash", listOf(stage, "splits").size() == 1);
    stage.wait(545);
    const auto list = scheduled(stage);
    stage.promise("it receives its phash a minute before it is due",
                  list.size() == 1 && list[0]["userInfo"]["p"] == listOf(stage, "splits")[1]["phash"]);
    stage.call("it is cancelled", "cancelPendingLocalNotification:", {list[0]["handle"]});
    stage.promise("its phash is returned", scheduled(stage).empty() && listOf(stage, "cancellations").size() == 1 &&
                                               listOf(stage, "splits")[1]["cancelled"].is_number());
}

void openPush(Stage& stage) {
    stage.play("the application goes to the background", {{"do", "state"}, {"to", "background"}});
    stage.wait(60);
    const auto device = listOf(stage, "devices")[0];
    const auto push = stage.service().post(
        "pushes", Dictionary{{"appKey", Stage::appKey()}, {"deviceId", device["deviceId"]}, {"alert", "Come back"}});
    stage.play("the user opens a push", {{"do", "state"}, {"to", "foreground"}});
    stage.play("the application receives it", {{"do", "push"}, {"payload", push["payload"]}});
    stage.play("the application becomes active", {{"do", "state"}, {"to", "active"}});
    stage.promise("the session carries the phash of the push that opened it",
                  stage.lastPayload("sessionStart")["phash"] == push["payload"]["p"]);
}

}  // namespace

void playNotifications(Stage& stage) {
    stage.switchOn(Stage::Network::Available);
    stage.play("launch", {{"do", "launch"}, {"preset", "development"}});
    stage.play("the application becomes active", {{"do", "state"}, {"to", "active"}});
    allowNotifications(stage);
    scheduleDueSoon(stage);
    scheduleDueLater(stage);
    openPush(stage);
    stage.play("the application is terminated", {{"do", "state"}, {"to", "terminate"}});
    stage.switchOff();
}

}  // namespace vorlane::demo

#include <array>
#include <functional>
#include <string>
#include <utility>

#include "Platform/CLBeaconRegion.h"
#include "Platform/CLLocation.h"
#include "Simulator/Platform/SimulatedInterstitialViewController.h"
#include "Tests/Fuzz/FuzzPhone.h"
#include "Tests/Fuzz/FuzzTarget.h"

namespace vorlane::fuzz {

namespace {

using RegionEvent = SimulatedLocationManager::RegionEvent;

constexpr const char* kBeacon = "B9407F30-F5F8-466E-AFF9-25556B57FE6D";
constexpr const char* kConfiguration =
    R"({"services":{"geo_regions":true,"beacon":true,"permission":true,"rich_inbox":true},"configs":{"geo_regions":)"
    R"({"significant_distance_m":500},"beacon":{"auto_beacon_notify":true,"beacon_data":[{"type":"message;data",)"
    R"("beacon_type":"ibeacon","uuid":"B9407F30-F5F8-466E-AFF9-25556B57FE6D","major":"*","minor":"*","alert_range":"any",)"
    R"("message_count":3,"time_period":1}]}}})";
constexpr const char* kRegions =
    R"({"geo_regions":[{"id":"17","latitude":59.91,"longitude":10.75,"radius":100,"plotwise_id":"S"}]})";
constexpr const char* kMailbox = R"({"synchronisation_complete":true,"notification":[{"id":7,"read":0}]})";
constexpr const char* kMessage = R"({"id":7,"sline":"Hello","content":"%3Cp%3E","created":1,"end":4000000000})";

void stand(FuzzPhone& device) {
    auto& manager = device.phone().simulatedLocationManager();
    manager.deliverLocations({{{59.91, 10.75}, 10, device.phone().now()}});
    device.phone().settle();
}

void cross(FuzzPhone& device) {
    stand(device);
    auto& manager = device.phone().simulatedLocationManager();
    for (const auto event : {RegionEvent::Enter, RegionEvent::Exit}) {
        for (const auto& region : manager.monitoredRegions()) manager.deliverRegionEvent(event, region);
        device.phone().settle();
    }
}

void hearBeacon(FuzzPhone& device) {
    auto& manager = device.phone().simulatedLocationManager();
    for (const auto& region : manager.monitoredRegions()) manager.deliverRegionEvent(RegionEvent::Enter, region);
    device.phone().settle();
    for (const auto& region : manager.rangedRegions()) {
        manager.deliverRanging({{kBeacon, 1, 2, CLProximity::Near, 1.5}}, region);
    }
    device.phone().settle();
}

void listInbox(FuzzPhone& device) {
    Vorlane::getInboxMessagesWithCompletionHandler([](const auto& messages, std::size_t unreadCount) {
        require(unreadCount <= messages.size(), "no more messages are unread than listed");
    });
    device.phone().settle();
}

void readTag(FuzzPhone& device) {
    int calls = 0;
    Vorlane::getTag("name", [&calls](const auto& value, const auto& error) {
        require(!value || !error, "a tag is a value or an error");
        ++calls;
    });
    device.phone().settle();
    require(calls == 1, "a handler runs exactly once");
}

void presentInterstitial(FuzzPhone& device) {
    int calls = 0;
    Vorlane::presentInterstitialWithPlacement(
        VLInterstitialPlacement::Feedback,
        std::make_shared<SimulatedInterstitialViewController>(SimulatedInterstitialViewController::Metadata::Taken),
        true, [&calls](bool, const auto&) { ++calls; });
    device.phone().settle();
    require(calls == 1, "a handler runs exactly once");
}

void scheduleNotification(FuzzPhone& device) {
    device.phone().simulatedUserNotificationCenter().setNotificationSettings({2, 2, 2, 2, 2, 2, 2, 1});
    Vorlane::didRegisterForRemoteNotificationsWithDeviceToken(device.phone().application(), {1, 2, 3}, nullptr);
    device.phone().settle();
    Vorlane::scheduleLocalNotification("Hello", 1, "campaign", device.phone().now() + 30, std::nullopt, std::nullopt);
    device.phone().advance(60);
}

/// An endpoint, and what makes the library ask it.
struct Endpoint {
    const char* part;
    void (*ask)(FuzzPhone& device);
};

constexpr std::array kEndpoints{
    Endpoint{"/config/", cross},
    Endpoint{"/geo/regions", cross},
    Endpoint{"/tracking", readTag},
    Endpoint{"/interstitial/", presentInterstitial},
    Endpoint{"/rich/mailbox", listInbox},
    Endpoint{"/rich/mailbox/messages/", listInbox},
    Endpoint{"/message/analytics", scheduleNotification},
    Endpoint{"/ibeacon", hearBeacon},
    Endpoint{"/geo", cross},
    Endpoint{"/v1/device", scheduleNotification},
};

void answerAsDesigned(ScriptedURLSession& session) {
    session.alwaysAnswer("", 200, "{}");
    session.alwaysAnswer("/rich/mailbox", 200, kMailbox);
    session.alwaysAnswer("/rich/mailbox/messages/", 200, kMessage);
    session.alwaysAnswer("/geo/regions", 200, kRegions);
    session.alwaysAnswer("/config/", 200, kConfiguration);
}

}  // namespace

void fuzzAnswer(std::string_view input) {
    if (input.empty()) return;
    const auto& endpoint = kEndpoints.at(static_cast<unsigned char>(input[0]) % kEndpoints.size());
    FuzzPhone device;
    answerAsDesigned(device.session());
    device.session().alwaysAnswer(endpoint.part, 200, std::string(input.substr(1)));
    device.phone().simulatedLocationManager().setAuthorizationStatus(CLAuthorizationStatus::AuthorizedAlways);
    device.start();
    endpoint.ask(device);
    require(device.phone().settle(), "the library comes to rest");
}

}  // namespace vorlane::fuzz

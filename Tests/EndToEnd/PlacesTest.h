#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "Tests/EndToEnd/EndToEndTest.h"

namespace vorlane {

/// A fixture for geofences and beacons, whose user and application allow them.
class PlacesTest : public EndToEndTest {
protected:
    PlacesTest() {
        const Dictionary info{{"CFBundleName", "Places"},
                              {"NSLocationAlwaysUsageDescription", "To find what is near"},
                              {"UIBackgroundModes", Array{"location"}}};
        std::ofstream(path("Info.json")) << Value(info).dump();
    }

    /// Switches services on, each with its configuration.
    void configure(const Dictionary& configurations) {
        Dictionary services;
        for (const auto& [name, configuration] : configurations) services[name] = true;
        service.put("config/" + appKey(),
                    Dictionary{{"services", Value(services)}, {"configs", Value(configurations)}});
    }

    /// Starts, launches and activates a phone at the current time.
    void begin() {
        startPhone({"--info", path("Info.json"), "--clock", fmt::format("virtual={:.0f}", now)});
        phone->perform({{"do", "locationAuthorisation"}, {"status", 3}});
        launch();
        state("active");
        phone->settle();
    }
    /// Kills the phone's process and starts another one with its files.
    void restart() {
        phone->kill(9);
        phone->wait();
        begin();
    }

    void pass(double seconds) {
        now += seconds;
        phone->perform({{"do", "advance"}, {"seconds", seconds}});
        phone->settle();
    }
    void moveTo(double latitude, double longitude, double accuracy = 5) {
        const Value place =
            Dictionary{{"latitude", latitude}, {"longitude", longitude}, {"horizontalAccuracy", accuracy}};
        phone->perform({{"do", "location"}, {"locations", Value(Array{place})}});
        phone->settle();
    }
    void region(const std::string& identifier, const std::string& event) {
        phone->perform({{"do", "region"}, {"identifier", identifier}, {"event", event}});
        phone->settle();
    }

    /// The identifiers of the monitored or ranged regions, sorted.
    std::vector<std::string> identifiers(const std::string& what) {
        std::vector<std::string> identifiers;
        const auto regions = phone->perform({{"do", "query"}, {"what", what}});
        for (const auto& region : regions) identifiers.push_back(region.at("identifier").get<std::string>());
        std::sort(identifiers.begin(), identifiers.end());
        return identifiers;
    }

    /// The notifications shown since the events were last taken.
    std::vector<Value> shown() const {
        std::vector<Value> notifications;
        for (const auto& event : phone->events("fired")) notifications.push_back(event.at("notification"));
        return notifications;
    }
    /// The texts of these notifications.
    std::vector<std::string> shownTexts() const {
        std::vector<std::string> texts;
        for (const auto& notification : shown()) texts.push_back(notification.at("alertBody").get<std::string>());
        return texts;
    }

    std::size_t requests(const std::string& endpoint) const { return service.requests(endpoint).size(); }

    /// Adds a fault to an endpoint until it is removed.
    void fail(const std::string& endpoint, const std::string& kind = "drop") {
        service.post("faults", Dictionary{{"endpoint", endpoint}, {"kind", kind}});
    }

    /// The time of the phone's virtual clock.
    double now = 1'700'000'000;
};

}  // namespace vorlane

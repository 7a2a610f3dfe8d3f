#include <future>
#include <string>
#include <thread>
#include <vector>

#include "Simulator/Service/Http/RequestFilter.h"
#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

constexpr int kClients = 16;
constexpr int kRequests = 10;

class ServiceConcurrencyTest : public ServiceTest {
protected:
    /// Runs `work` on kClients threads at the same time.
    template <class Work>
    static void atOnce(Work work) {
        std::vector<std::thread> threads;
        for (int i = 0; i < kClients; ++i) threads.emplace_back([work, i] { work(std::to_string(i)); });
        for (auto& thread : threads) thread.join();
    }
};

TEST_F(ServiceConcurrencyTest, ServesManyClientsAtOnce) {
    auto waiting = std::async(std::launch::async, [this] {
        return client().get("/_admin/requests?waitFor=" + std::to_string(3 * kClients * kRequests) + "&timeout=600");
    });
    atOnce([this](const std::string& user) {
        for (int i = 0; i < kRequests; ++i) {
            const auto name = "t" + std::to_string(i);
            const auto tags = "/api/apps/K/tracking/" + user;
            expectOK(client().postJSON(tags, {{"name", name}, {"value", i}}));
            EXPECT_EQ(client().get(tags + "/tag/" + name).json(), Value({{"value", i}}));
            expectOK(client().postForm(
                "/0.8/register_app_event",
                {{"app_key", "K"}, {"tracking_id", user}, {"event_type", name}, {"event_label", ""}}));
        }
    });
    const auto records = waiting.get().json()["requests"];
    ASSERT_EQ(records.size(), 3u * kClients * kRequests);
    for (std::size_t i = 0; i < records.size(); ++i) EXPECT_EQ(records[i]["number"], i + 1);
    EXPECT_EQ(listOf("events").size(), std::size_t{kClients * kRequests});
    EXPECT_EQ(listOf("tags").size(), std::size_t{kClients * kRequests});
}

TEST_F(ServiceConcurrencyTest, CountedFaultsApplyExactlyAsOften) {
    addFault({{"endpoint", "config"}, {"kind", "status"}, {"status", 500}, {"count", 20}});
    atOnce([this](const std::string& appKey) {
        for (int i = 0; i < kRequests; ++i) client().get("/config/application/ios/" + appKey);
    });
    EXPECT_EQ(listOf("requests", "?status=500").size(), 20u);
    EXPECT_EQ(listOf("requests", "?status=200").size(), std::size_t{kClients * kRequests - 20});
}

TEST_F(ServiceConcurrencyTest, OperatorsMayChangeDataDuringRequests) {
    atOnce([this](const std::string& user) {
        for (int i = 0; i < kRequests; ++i) {
            client().postJSON("/api/apps/K/tracking/" + user, {{"name", "a"}, {"value", i}});
            client().put("/_admin/config/K", {{"a", i}});
            client().get("/config/application/ios/K?trackingId=" + user);
            client().post("/_admin/reset", "", "text/plain");
            client().postJSON("/_admin/faults", {{"endpoint", "getTag"}, {"kind", "drop"}, {"count", 1}});
            client().get("/api/apps/K/tracking/" + user + "/tag/a");
            client().get("/_admin/tags");
        }
    });
    expectOK(client().post("/_admin/reset", "", "text/plain"));
    EXPECT_EQ(listOf("tags"), Value::array());
}

TEST_F(ServiceConcurrencyTest, ServesManyWalkingPhonesAtOnce) {
    const std::string uuid = "E2C56DB5-DFFB-48D2-B060-D0F5A71096E0";
    atOnce([this, uuid](const std::string& user) {
        const std::string phone = "/K/" + user;
        client().put("/_admin/regions/K/" + user, {{"latitude", 1}, {"longitude", 2}, {"radius", 3}});
        client().put("/_admin/geoContent/K/enter/" + user, {{"pushtext", "in"}});
        for (int i = 0; i < kRequests; ++i) {
            const Value visit = {{"timestamp", i},
                                 {"sessionId", user + "." + std::to_string(i)},
                                 {"uuid", uuid},
                                 {"major", 1},
                                 {"minor", "*"}};
            EXPECT_FALSE(
                client().get(phone + "/geo/regions?latitude=0&longitude=0&max=20").json()["geo_regions"].empty());
            const Value region = {{"segmentId", user}, {"status", "enter"}};
            EXPECT_TRUE(client()
                            .postJSON(phone + "/geo", {{"getContent", true}, {"geoRegion", region}})
                            .json()
                            .contains("message"));
            expectOK(client().postJSON(phone + "/session/beacon/region/entry", visit));
            expectOK(client().postJSON(phone + "/session/beacon/region/exit", visit));
            expectOK(client().postJSON(phone + "/session/beacon", {{"timestamp", i}, {"beacons", Value::array()}}));
        }
    });
    const auto visits = listOf("beaconSessions");
    EXPECT_EQ(visits.size(), std::size_t{kClients * kRequests});
    for (const auto& visit : visits) EXPECT_EQ(visit["startTime"], visit["endTime"]);
    EXPECT_EQ(listOf("beaconSummaries").size(), std::size_t{kClients * kRequests});
}

TEST_F(ServiceConcurrencyTest, WaitingOperatorsDoNotBlockApps) {
    std::vector<std::future<ServiceAnswer>> waiting;
    for (int i = 0; i < 3 * kClients; ++i) {
        waiting.push_back(
            std::async(std::launch::async, [this] { return client().get("/_admin/requests?waitFor=1&timeout=600"); }));
    }
    EXPECT_EQ(client().get("/config/application/ios/K").status, 200);
    for (auto& answer : waiting) EXPECT_EQ(answer.get().json()["complete"], true);
}

TEST_F(ServiceConcurrencyTest, MayEndDuringRequests) {
    std::vector<std::thread> clients;
    for (int i = 0; i < kClients; ++i) {
        clients.emplace_back([this] {
            // Until the service has ended.
            while (client().get("/config/application/ios/K").status == 200) continue;
        });
    }
    server().service().log().waitFor(50, {}, 600);
    stopServer();
    for (auto& thread : clients) thread.join();
}

}  // namespace
}  // namespace vorlane::service

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Simulator/Service/Http/ServiceError.h"
#include "Simulator/Service/Http/ServiceServer.h"
#include "Simulator/Service/Store/SQLiteDatabase.h"
#include "Tests/Service/ServiceClient.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane::service {
namespace {

class ServicePersistenceTest : public ::testing::Test {
protected:
    ServiceOptions optionsWith(const std::string& database) const {
        ServiceOptions options;
        options.database = folder.path(database);
        return options;
    }

    const TemporaryFolder folder;
};

/// Stores one object of every kind.
void fill(const ServiceClient& client) {
    client.postForm("/0.8/session", {{"app_key", "K"}, {"tracking_id", "T"}, {"device_id", "D"}});
    client.postForm("/0.8/register_app_event",
                    {{"app_key", "K"}, {"tracking_id", "T"}, {"event_type", "e"}, {"event_label", {{"a", 1}}}});
    client.postJSON("/api/apps/K/tracking/T", {{"name", "a"}, {"value", 1}});
    client.postJSON(
        "/v1/device",
        {{"appkey", "K"}, {"trackingid", "T"}, {"device_id", "D"}, {"devicetoken", "00"}, {"type", "register"}});
    client.put("/_admin/config/K", {{"a", 1}});
    client.put("/_admin/interstitials/K/Feedback", {{"html", "mine"}, {"metadata", {{"a", 1}}}, {"phash", "p"}});
    client.del("/_admin/interstitials/K/App%20Open");
    client.postJSON("/_admin/messages",
                    {{"appKey", "K"}, {"trackingId", "T"}, {"subject", "Hello"}, {"image", "ffd8ff"}});
}

/// Stores one object of every kind that belongs to places.
void fillPlaces(const ServiceClient& client) {
    const std::string uuid = "E2C56DB5-DFFB-48D2-B060-D0F5A71096E0";
    client.put("/_admin/regions/K/a", {{"latitude", 1}, {"longitude", 2}, {"radius", 3}, {"own", {4, nullptr}}});
    client.put("/_admin/geoContent/K/enter/a", {{"pushtext", "in"}, {"metadata", {{"a", 1}}}});
    client.put("/_admin/beaconContent/K/" + uuid + "/1/*", {{"pushtext", "near"}, {"sound", "s"}});
    client.postJSON("/K/T/session/beacon/region/entry",
                    {{"timestamp", "1"}, {"sessionId", "S"}, {"uuid", uuid}, {"major", "1"}, {"minor", "*"}});
    client.postJSON("/K/T/session/beacon", {{"timestamp", "2"}, {"sessionId", "S"}, {"beacons", Value::array()}});
}

std::vector<Value> allPlaces(const ServiceClient& client) {
    std::vector<Value> answers;
    for (const char* target : {"/_admin/regions/K", "/_admin/geoContent/K", "/_admin/beaconContent/K",
                               "/_admin/beaconSessions", "/_admin/beaconSummaries"})
        answers.push_back(client.get(target).json());
    return answers;
}

std::vector<Value> everything(const ServiceClient& client) {
    std::vector<Value> answers;
    for (const char* target : {"/_admin/sessions", "/_admin/events", "/_admin/tags", "/_admin/devices",
                               "/_admin/config/K", "/_admin/interstitials/K", "/api/apps/K/tracking/T/tag/a",
                               "/_admin/messages", "/K/T/rich/mailbox?stateHash=x"})
        answers.push_back(client.get(target).json());
    return answers;
}

TEST_F(ServicePersistenceTest, FilesKeepEverythingButTheRequests) {
    std::vector<Value> before;
    {
        const ServiceServer server(optionsWith("db"));
        const ServiceClient client(server.port());
        fill(client);
        before = everything(client);
        EXPECT_EQ(before[0]["sessions"].size(), 1u);
    }
    const ServiceServer server(optionsWith("db"));
    const ServiceClient client(server.port());
    EXPECT_EQ(everything(client), before);
    EXPECT_EQ(client.get("/_admin/requests").json()["requests"].size(), 2u);
}

TEST_F(ServicePersistenceTest, MemoryIsLostAtTheEnd) {
    {
        const ServiceServer server;
        fill(ServiceClient(server.port()));
    }
    const ServiceServer server;
    EXPECT_EQ(ServiceClient(server.port()).get("/_admin/events").json()["events"], Value::array());
}

TEST_F(ServicePersistenceTest, NumbersContinueAfterARestart) {
    for (int i = 0; i < 2; ++i) {
        const ServiceServer server(optionsWith("db"));
        fill(ServiceClient(server.port()));
    }
    const ServiceServer server(optionsWith("db"));
    const auto events = ServiceClient(server.port()).get("/_admin/events").json()["events"];
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[1]["number"], 2);
}

TEST_F(ServicePersistenceTest, OldDatabasesReceiveMailboxes) {
    {
        const ServiceServer server(optionsWith("db"));
        fill(ServiceClient(server.port()));
    }
    {
        SQLiteDatabase database(folder.path("db"));
        database.execute(
            "DROP TABLE message_ids; DROP TABLE messages; DROP TABLE mailboxes; DROP TABLE card_images; "
            "PRAGMA user_version = 4");
    }
    const ServiceServer server(optionsWith("db"));
    const ServiceClient client(server.port());
    EXPECT_EQ(client.get("/_admin/events").json()["events"].size(), 1u);
    EXPECT_EQ(client.get("/_admin/messages").json()["messages"], Value::array());
    fill(client);
    EXPECT_EQ(client.get("/_admin/messages").json()["messages"].size(), 1u);
}

TEST_F(ServicePersistenceTest, UnusableDatabasesAreErrors) {
    EXPECT_THROW(ServiceServer(optionsWith("no/such/folder")), ServiceError);
    std::ofstream(folder.path("text")) << std::string(5000, 'x');
    EXPECT_THROW(ServiceServer(optionsWith("text")), ServiceError);
    EXPECT_EQ(std::filesystem::file_size(folder.path("text")), 5000u);
}

TEST_F(ServicePersistenceTest, ForeignDatabasesAreLeftUnchanged) {
    {
        SQLiteDatabase other(folder.path("other"));
        other.execute("CREATE TABLE mine (a)");
    }
    EXPECT_THROW(ServiceServer(optionsWith("other")), ServiceError);
    {
        SQLiteDatabase newer(folder.path("newer"));
        newer.execute("PRAGMA user_version = 99");
    }
    EXPECT_THROW(ServiceServer(optionsWith("newer")), ServiceError);
}

TEST_F(ServicePersistenceTest, FilesKeepGeofencesAndBeacons) {
    std::vector<Value> before;
    {
        const ServiceServer server(optionsWith("db"));
        const ServiceClient client(server.port());
        fillPlaces(client);
        before = allPlaces(client);
        for (const auto& answer : before) EXPECT_EQ(answer.begin()->size(), 1u) << answer;
    }
    const ServiceServer server(optionsWith("db"));
    EXPECT_EQ(allPlaces(ServiceClient(server.port())), before);
}

TEST_F(ServicePersistenceTest, DatabasesOfVersion1AreUpgraded) {
    std::vector<Value> before;
    {
        const ServiceServer server(optionsWith("db"));
        const ServiceClient client(server.port());
        fill(client);
        client.del("/_admin/interstitials/K");
        client.del("/_admin/messages");
        before = everything(client);
    }
    SQLiteDatabase(folder.path("db"))
        .execute(
            "DROP TABLE placements; DROP TABLE regions; DROP TABLE geo_contents; DROP TABLE beacon_contents; "
            "DROP TABLE beacon_sessions; DROP TABLE beacon_summaries; DROP TABLE campaigns; DROP TABLE splits; "
            "DROP TABLE cancellations; DROP TABLE pushes; DROP TABLE message_ids; DROP TABLE messages; "
            "DROP TABLE mailboxes; DROP TABLE card_images; PRAGMA user_version = 1");
    const ServiceServer server(optionsWith("db"));
    const ServiceClient client(server.port());
    EXPECT_EQ(everything(client), before);
    EXPECT_EQ(client.put("/_admin/interstitials/K/Feedback", {{"html", "mine"}}).status, 200);
    fillPlaces(client);
    for (const auto& answer : allPlaces(client)) EXPECT_EQ(answer.begin()->size(), 1u) << answer;
}

TEST_F(ServicePersistenceTest, OccupiedPortsAreErrors) {
    const ServiceServer first;
    ServiceOptions options;
    options.port = first.port();
    EXPECT_THROW(ServiceServer{options}, ServiceError);
}

TEST_F(ServicePersistenceTest, PortsAreReleasedImmediately) {
    ServiceOptions options;
    {
        const ServiceServer first;
        options.port = first.port();
        EXPECT_EQ(ServiceClient(first.port()).get("/_admin/health").status, 200);
    }
    const ServiceServer second(options);
    EXPECT_EQ(second.port(), options.port);
    EXPECT_EQ(ServiceClient(second.port()).get("/_admin/health").status, 200);
}

}  // namespace
}  // namespace vorlane::service

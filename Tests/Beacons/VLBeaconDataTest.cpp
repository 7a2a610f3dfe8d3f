#include "Beacons/VLBeaconData.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "Beacons/VLBeaconRegionSessionData.h"
#include "Beacons/VLBeaconRegionSessionsData.h"
#include "Categories/CLBeaconRegion+VLRegionId.h"
#include "Tests/Beacons/BeaconTest.h"

namespace vorlane {

namespace {

using enum CLProximity;

class VLBeaconDataTest : public BeaconTest {
protected:
    VLBeaconDataTest() { restart(); }

    /// Starts a process. Only the file remains.
    void restart(std::shared_ptr<CLBeaconRegion> given = region(1, 2)) {
        watched = std::move(given);
        sessionsData = std::make_shared<VLBeaconRegionSessionsData>();
        sessionData = std::make_shared<VLBeaconRegionSessionData>(watched, sessionsData);
        data = std::make_unique<VLBeaconData>(settings, sessionData, urlBuilder, urlSession, payloadBuilder);
    }
    void range(int times, const std::vector<CLBeacon>& beacons) {
        for (int i = 0; i < times; ++i) data->rangingBeacons(beacons);
    }
    /// The payloads of requests whose URL ends with the path.
    std::vector<Value> payloads(const std::string& path) {
        std::vector<Value> found;
        for (const auto& request : session().requests(path)) {
            if (request.request.URL.absoluteString().ends_with(path)) found.push_back(request.payload());
        }
        return found;
    }
    Value payloadOf(const Value& sessionId, const std::string& major, const std::string& minor) {
        return Value(Dictionary{{"timestamp", fmt::format("{:.0f}", phone().now() * 1000)},
                                {"sessionId", sessionId},
                                {"uuid", kUUID},
                                {"major", major},
                                {"minor", minor},
                                {"deviceData", payloadBuilder->deviceData()}});
    }
    static Dictionary entry(int minor, const std::string& proximity) {
        return {{"uuid", kUUID}, {"major", 1}, {"minor", minor}, {"proximity", proximity}};
    }

    std::shared_ptr<CLBeaconRegion> watched;
    std::shared_ptr<VLBeaconRegionSessionsData> sessionsData;
    std::shared_ptr<VLBeaconRegionSessionData> sessionData;
    std::unique_ptr<VLBeaconData> data;
};

TEST_F(VLBeaconDataTest, VisitKeepsItsIdentifier) {
    data->didEnterRegion();
    const auto stored = sessionsFile();
    const auto id = stored[std::string(kUUID) + "_1_2"]["REGION_SESSION_ID"];
    EXPECT_EQ(stored, Value(Dictionary{{std::string(kUUID) + "_1_2", Dictionary{{"REGION_SESSION_ID", id}}}}));
    EXPECT_EQ(id.get<std::string>().size(), 36U);
    const auto start = session().lastRequest();
    EXPECT_EQ(start.request.HTTPMethod, "POST");
    EXPECT_TRUE(start.request.URL.absoluteString().ends_with(kEntryPath)) << start.request.URL.absoluteString();
    EXPECT_TRUE(start.header("Content-Type").value_or("").starts_with("application/json"));
    EXPECT_EQ(start.payload(), payloadOf(id, "1", "2"));
    EXPECT_EQ(logged("Beacon Data Session Start request"), 1);
    phone().advance(61.5);
    data->didExitRegion();
    const auto end = session().lastRequest();
    EXPECT_TRUE(end.request.URL.absoluteString().ends_with(kExitPath)) << end.request.URL.absoluteString();
    EXPECT_EQ(end.payload(), payloadOf(id, "1", "2"));
    EXPECT_EQ(logged("Beacon Data Session End request"), 1);
    EXPECT_EQ(sessionsFile(), Value(Dictionary{}));
    EXPECT_EQ(session().requests().size(), 2U);
}

TEST_F(VLBeaconDataTest, AnyMajorAndMinorAreSentAsAStar) {
    restart(region());
    data->didEnterRegion();
    const auto id = sessionsFile()[std::string(kUUID) + "_*_*"]["REGION_SESSION_ID"];
    EXPECT_EQ(session().lastRequest().payload(), payloadOf(id, "*", "*"));
    data->didExitRegion();
    EXPECT_EQ(session().lastRequest().payload(), payloadOf(id, "*", "*"));
    restart(region(0));
    data->didEnterRegion();
    EXPECT_EQ(session().lastRequest().payload()["major"], Value("0"));
    EXPECT_EQ(session().lastRequest().payload()["minor"], Value("*"));
}

TEST_F(VLBeaconDataTest, ExitAfterARestartEndsTheVisit) {
    data->didEnterRegion();
    const auto id = session().lastRequest().payload()["sessionId"];
    restart();
    data->didExitRegion();
    EXPECT_EQ(session().lastRequest().payload(), payloadOf(id, "1", "2"));
    restart();
    data->didExitRegion();
    EXPECT_EQ(payloads(kExitPath).size(), 1U);
}

TEST_F(VLBeaconDataTest, ExitWithoutAnEnterIsOnlyLogged) {
    data->didExitRegion();
    EXPECT_EQ(logged("No previous beacon region session data found for region:CLBeaconRegion (identifier:'R', "
                     "uuid:B9407F30-F5F8-466E-AFF9-25556B57FE6D, major:1, minor:2)"),
              1);
    EXPECT_TRUE(session().requests().empty());
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(documentsPath("VLBeaconRegionSessions.plist")));
}

TEST_F(VLBeaconDataTest, SecondEnterStartsANewSession) {
    data->didEnterRegion();
    data->didEnterRegion();
    const auto starts = payloads(kEntryPath);
    ASSERT_EQ(starts.size(), 2U);
    EXPECT_NE(starts[0]["sessionId"], starts[1]["sessionId"]);
    data->didExitRegion();
    EXPECT_EQ(payloads(kExitPath).front()["sessionId"], starts[1]["sessionId"]);
    EXPECT_EQ(payloads(kExitPath).size(), 1U);
}

TEST_F(VLBeaconDataTest, FailedRequestIsNotRetried) {
    session().alwaysFail("");
    data->didEnterRegion();
    range(30, {beacon()});
    data->didExitRegion();
    phone().settle();
    phone().advance(3600);
    EXPECT_EQ(session().requests().size(), 3U);
    EXPECT_EQ(sessionsFile(), Value(Dictionary{}));
}

TEST_F(VLBeaconDataTest, Every30thResultSendsASummary) {
    EXPECT_EQ(data->sendInterval(), 30);
    data->didEnterRegion();
    const auto id = session().lastRequest().payload()["sessionId"];
    range(29, {beacon()});
    EXPECT_EQ(data->currentInterval(), 29);
    EXPECT_TRUE(payloads(kSummaryPath).empty());
    phone().advance(1);
    range(1, {beacon()});
    EXPECT_EQ(data->currentInterval(), 0);
    ASSERT_EQ(payloads(kSummaryPath).size(), 1U);
    EXPECT_EQ(payloads(kSummaryPath)[0], Value(Dictionary{{"beacons", Array{entry(2, "near")}},
                                                          {"timestamp", fmt::format("{:.0f}", phone().now() * 1000)},
                                                          {"sessionId", id},
                                                          {"deviceData", payloadBuilder->deviceData()}}));
    range(29, {beacon(3)});
    EXPECT_EQ(payloads(kSummaryPath).size(), 1U);
    range(1, {beacon(3)});
    ASSERT_EQ(payloads(kSummaryPath).size(), 2U);
    EXPECT_EQ(payloads(kSummaryPath)[1]["beacons"], Value(Array{entry(3, "near")}));
}

TEST_F(VLBeaconDataTest, RemainingResultsCountTowardsTheNextVisit) {
    data->didEnterRegion();
    range(20, {beacon(1)});
    data->didExitRegion();
    range(5, {beacon(1)});
    data->didEnterRegion();
    const auto id = session().lastRequest().payload()["sessionId"];
    range(5, {beacon(4)});
    ASSERT_EQ(payloads(kSummaryPath).size(), 1U);
    EXPECT_EQ(payloads(kSummaryPath)[0]["beacons"], Value(Array{entry(1, "near"), entry(4, "near")}));
    EXPECT_EQ(payloads(kSummaryPath)[0]["sessionId"], id);
}

TEST_F(VLBeaconDataTest, SummaryWithoutASessionHasNoIdentifier) {
    range(30, {beacon()});
    EXPECT_EQ(payloads(kSummaryPath).front(),
              Value(Dictionary{{"beacons", Array{entry(2, "near")}},
                               {"timestamp", fmt::format("{:.0f}", phone().now() * 1000)},
                               {"deviceData", payloadBuilder->deviceData()}}));
}

TEST_F(VLBeaconDataTest, EmptyResultsCount) {
    range(30, {});
    EXPECT_EQ(payloads(kSummaryPath).front()["beacons"], Value(Array{}));
    range(29, {});
    range(1, {beacon()});
    EXPECT_EQ(payloads(kSummaryPath).back()["beacons"], Value(Array{entry(2, "near")}));
}

TEST_F(VLBeaconDataTest, ProximityIsTheLeastFrequentWord) {
    range(20, {beacon(2, Near)});
    range(10, {beacon(2, Far)});
    EXPECT_EQ(payloads(kSummaryPath).back()["beacons"], Value(Array{entry(2, "far")}));
    range(1, {beacon(2, Immediate)});
    range(2, {beacon(2, Unknown)});
    range(27, {beacon(2, Near)});
    EXPECT_EQ(payloads(kSummaryPath).back()["beacons"], Value(Array{entry(2, "immediate")}));
}

TEST_F(VLBeaconDataTest, EquallyFrequentWordsAreOrderedAlphabetically) {
    range(10, {beacon(2, Unknown)});
    range(10, {beacon(2, Near)});
    range(10, {beacon(2, Immediate)});
    EXPECT_EQ(payloads(kSummaryPath).back()["beacons"], Value(Array{entry(2, "immediate")}));
    range(15, {beacon(2, Near)});
    range(15, {beacon(2, Far)});
    EXPECT_EQ(payloads(kSummaryPath).back()["beacons"], Value(Array{entry(2, "far")}));
}

TEST_F(VLBeaconDataTest, BeaconsAreCountedSeparately) {
    range(1, {beacon(1, Far), beacon(2, Near)});
    range(2, {beacon(2, Far)});
    range(27, {beacon(3, Immediate)});
    EXPECT_EQ(payloads(kSummaryPath).back()["beacons"],
              Value(Array{entry(1, "far"), entry(2, "near"), entry(3, "immediate")}));
}

TEST_F(VLBeaconDataTest, EntryIsTakenFromTheFirstResult) {
    CLBeacon other = beacon(2, Near);
    other.proximityUUID = kOtherUUID;
    range(1, {beacon(2, Near)});
    range(29, {other});
    EXPECT_EQ(payloads(kSummaryPath).back()["beacons"], Value(Array{entry(2, "near")}));
}

TEST_F(VLBeaconDataTest, LastOfEqualBeaconsInAResultCounts) {
    CLBeacon other = beacon(2, Far);
    other.proximityUUID = kOtherUUID;
    const auto result = VLBeaconData::beaconsArrayToDictionary({beacon(2, Near), beacon(3, Immediate), other});
    EXPECT_EQ(
        Value(result),
        Value(Dictionary{{"1_2", Dictionary{{"uuid", kOtherUUID}, {"major", 1}, {"minor", 2}, {"proximity", "far"}}},
                         {"1_3", entry(3, "immediate")}}));
    EXPECT_EQ(Value(VLBeaconData::beaconToDictionary(beacon(9, Unknown))), Value(entry(9, "unknown")));
}

TEST_F(VLBeaconDataTest, UnnamedProximityCountsAsUnknown) {
    range(30, {beacon(2, static_cast<CLProximity>(7))});
    EXPECT_EQ(payloads(kSummaryPath).back()["beacons"], Value(Array{entry(2, "unknown")}));
    EXPECT_EQ(loggedPart("Unknown proximity value \"7\" for beacon: "), 30);
}

class VLBeaconRegionSessionsDataTest : public VLBeaconDataTest {};

TEST_F(VLBeaconRegionSessionsDataTest, OnlySettersWriteTheFile) {
    EXPECT_FALSE(sessionsData->idWithRegionId("A"));
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(documentsPath("VLBeaconRegionSessions.plist")));
    EXPECT_EQ(VLBeaconRegionSessionsData::getFilePath(), documentsPath("VLBeaconRegionSessions.plist"));
    sessionsData->setId("1", "A");
    sessionsData->setId("2", "B");
    sessionsData->setId("3", "A");
    EXPECT_EQ(sessionsFile(), Value(Dictionary{{"A", Dictionary{{"REGION_SESSION_ID", "3"}}},
                                               {"B", Dictionary{{"REGION_SESSION_ID", "2"}}}}));
    EXPECT_EQ(sessionsData->idWithRegionId("A"), "3");
    sessionsData->removeRegion("A");
    EXPECT_FALSE(sessionsData->idWithRegionId("A"));
    EXPECT_EQ(VLBeaconRegionSessionsData().idWithRegionId("B"), "2");
    std::filesystem::remove(documentsPath("VLBeaconRegionSessions.plist"));
    sessionsData->removeRegion("no such region");
    EXPECT_EQ(sessionsFile(), Value(Dictionary{{"B", Dictionary{{"REGION_SESSION_ID", "2"}}}}));
}

TEST_F(VLBeaconRegionSessionsDataTest, FileIsAPrivatePropertyList) {
    sessionsData->setId("I", "A_*_*");
    EXPECT_EQ(bytesOf("VLBeaconRegionSessions.plist"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n<dict>\n\t<key>A_*_*</key>\n\t<dict>\n\t\t<key>REGION_SESSION_ID</key>\n"
              "\t\t<string>I</string>\n\t</dict>\n</dict>\n</plist>\n");
    EXPECT_EQ(std::filesystem::status(documentsPath("VLBeaconRegionSessions.plist")).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(VLBeaconRegionSessionsDataTest, MalformedFileMeansNoOpenSession) {
    for (const auto* bytes : {"", "no property list", "<plist><array/></plist>"}) {
        writeBytes("VLBeaconRegionSessions.plist", bytes);
        VLBeaconRegionSessionsData broken;
        EXPECT_FALSE(broken.idWithRegionId("A")) << bytes;
        broken.setId("1", "A");
        EXPECT_EQ(sessionsFile(), Value(Dictionary{{"A", Dictionary{{"REGION_SESSION_ID", "1"}}}})) << bytes;
    }
}

TEST_F(VLBeaconRegionSessionsDataTest, MistypedEntriesCountAsAbsent) {
    for (const Value& wrong :
         {Value("text"), Value(1), Value(true), Value(Array{"1"}), Value(Dictionary{}),
          Value(Dictionary{{"REGION_SESSION_ID", 1}}), Value(Dictionary{{"REGION_SESSION_ID", Array{"1"}}})}) {
        writeFile("VLBeaconRegionSessions.plist", {{std::string(kUUID) + "_1_2", wrong}});
        restart();
        EXPECT_FALSE(sessionData->id()) << wrong;
        data->didExitRegion();
        EXPECT_TRUE(session().requests().empty()) << wrong;
    }
}

TEST_F(VLBeaconRegionSessionsDataTest, DataAccessesOnlyItsOwnEntry) {
    sessionsData->setId("other", "another region");
    EXPECT_EQ(sessionData->regionId(), vl_getRegionId(*watched));
    EXPECT_EQ(sessionData->region(), watched);
    sessionData->setId("mine");
    EXPECT_EQ(sessionData->id(), "mine");
    sessionData->clear();
    EXPECT_FALSE(sessionData->id());
    EXPECT_EQ(sessionsFile(), Value(Dictionary{{"another region", Dictionary{{"REGION_SESSION_ID", "other"}}}}));
}

TEST_F(VLBeaconRegionSessionsDataTest, DataHoldsItsRegionWeakly) {
    const VLBeaconRegionSessionData alone(region(5, 6), sessionsData);
    EXPECT_EQ(alone.region(), nullptr);
    EXPECT_EQ(alone.regionId(), std::string(kUUID) + "_5_6");
}

TEST_F(VLBeaconRegionSessionsDataTest, ValuesStayInEffectAfterAFailedWrite) {
    std::filesystem::create_directories(documentsPath("VLBeaconRegionSessions.plist") + "/in the way");
    data->didEnterRegion();
    const auto id = session().lastRequest().payload()["sessionId"];
    EXPECT_EQ(Value(sessionData->id().value_or("")), id);
    data->didExitRegion();
    EXPECT_EQ(payloads(kExitPath).front()["sessionId"], id);
    EXPECT_FALSE(sessionData->id());
    EXPECT_TRUE(sessionsFile().is_null());
}

TEST_F(VLBeaconRegionSessionsDataTest, ThreadsReadAndWriteAtOnce) {
    const auto write = [this](const std::string& regionId) {
        for (int i = 0; i < 25; ++i) {
            sessionsData->setId(std::to_string(i), regionId);
            EXPECT_EQ(sessionsData->idWithRegionId(regionId), std::to_string(i));
        }
    };
    std::thread other(write, "A");
    write("B");
    other.join();
    EXPECT_EQ(sessionsFile(), Value(Dictionary{{"A", Dictionary{{"REGION_SESSION_ID", "24"}}},
                                               {"B", Dictionary{{"REGION_SESSION_ID", "24"}}}}));
}

}  // namespace

}  // namespace vorlane

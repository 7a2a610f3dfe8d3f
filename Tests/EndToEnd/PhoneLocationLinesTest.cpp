#include "Tests/EndToEnd/EndToEndTest.h"

namespace vorlane {

namespace {

const std::string kRegionUUID = "B9407F30-F5F8-466E-AFF9-25556B57FE6D";

class PhoneLocationLinesTest : public EndToEndTest {
protected:
    PhoneLocationLinesTest() { startPhone(); }

    void expectRefused(const std::string& line) { EXPECT_TRUE(phone->answerToText(line).contains("error")) << line; }
    Value query(const std::string& what) { return phone->perform({{"do", "query"}, {"what", what}}); }
};

TEST_F(PhoneLocationLinesTest, UnusableLinesAreErrors) {
    for (
        const auto* line :
        {R"({"do":"capabilities"})",
         R"({"do":"capabilities","set":{"flying":true}})",
         R"({"do":"capabilities","set":{"ranging":1}})",
         R"({"do":"capabilities","set":{"maximumRegionMonitoringDistance":"5"}})",
         R"({"do":"locationAuthorisation"})",
         R"({"do":"locationAuthorisation","status":5})",
         R"({"do":"locationAuthorisation","status":-1})",
         R"({"do":"location"})",
         R"({"do":"location","locations":{}})",
         R"({"do":"location","locations":[5]})",
         R"({"do":"location","locations":[{"latitude":1}]})",
         R"({"do":"location","locations":[{"latitude":1,"longitude":"2"}]})",
         R"({"do":"region","identifier":"none","event":"enter"})",
         R"({"do":"region","event":"enter"})",
         R"({"do":"region","identifier":"none","event":"odd"})",
         R"({"do":"region","event":"enter","region":{"type":"circular","identifier":"1"}})",
         R"({"do":"range","beacons":[]})",
         R"({"do":"range","beacons":[],"region":{"type":"circular","identifier":"1","latitude":1,"longitude":2,"radius":3}})",
         R"({"do":"range","region":{"type":"beacon","identifier":"1","uuid":"no"},"beacons":[]})",
         R"({"do":"range","region":{"type":"beacon","identifier":"1","uuid":"B9407F30-F5F8-466E-AFF9-25556B57FE6D"},"beacons":[{"uuid":"B9407F30-F5F8-466E-AFF9-25556B57FE6D","major":70000,"minor":1}]})",
         R"({"do":"range","region":{"type":"beacon","identifier":"1","uuid":"B9407F30-F5F8-466E-AFF9-25556B57FE6D"},"beacons":[{"uuid":"B9407F30-F5F8-466E-AFF9-25556B57FE6D","major":1.5,"minor":1}]})",
         R"({"do":"range","region":{"type":"beacon","identifier":"1","uuid":"B9407F30-F5F8-466E-AFF9-25556B57FE6D"},"beacons":[{"uuid":"u","major":1,"minor":1}]})"}) {
        expectRefused(line);
    }
}

TEST_F(PhoneLocationLinesTest, LinesMayPrecedeTheLaunch) {
    phone->perform({{"do", "capabilities"},
                    {"set", Dictionary{{"locationServicesEnabled", true},
                                       {"regionMonitoring", true},
                                       {"beaconMonitoring", true},
                                       {"ranging", true},
                                       {"maximumRegionMonitoringDistance", 5000},
                                       {"backgroundTimeRemaining", 12.5},
                                       {"activityType", 2}}}});
    phone->perform({{"do", "locationAuthorisation"}, {"status", 3}});
    phone->perform(
        {{"do", "location"},
         {"locations",
          Array{Dictionary{{"latitude", 59.9}, {"longitude", 10.7}},
                Dictionary{{"latitude", 59.9}, {"longitude", 10.7}, {"horizontalAccuracy", 5}, {"age", 2}}}}});
    const Dictionary beacons{{"type", "beacon"}, {"identifier", "shop"}, {"uuid", kRegionUUID}};
    phone->perform({{"do", "region"}, {"region", beacons}, {"event", "outside"}});
    phone->perform(
        {{"do", "range"},
         {"region", beacons},
         {"beacons", Array{Dictionary{{"uuid", kRegionUUID}, {"major", 1}, {"minor", 2}, {"proximity", 77}}}}});
    EXPECT_EQ(query("monitoredRegions"), Value(Array{}));
    EXPECT_EQ(query("rangedRegions"), Value(Array{}));
}

}  // namespace

}  // namespace vorlane

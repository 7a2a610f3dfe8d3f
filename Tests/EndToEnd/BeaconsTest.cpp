#include "Categories/NSDictionary+VLLookup.h"
#include "Tests/EndToEnd/PlacesTest.h"

namespace vorlane {

namespace {

using Texts = std::vector<std::string>;

const std::string kUUID = "B9407F30-F5F8-466E-AFF9-25556B57FE6D";

class BeaconsTest : public PlacesTest {
protected:
    /// The rule of the shop's entrance, with additional fields.
    static Value rule(const std::string& type, const Dictionary& further = {}) {
        Dictionary rule{
            {"type", type},  {"beacon_type", "ibeacon"}, {"uuid", kUUID},    {"major", 1},        {"minor", 2},
            {"priority", 1}, {"alert_range", "any"},     {"time_period", 1}, {"message_count", 5}};
        for (const auto& [key, value] : further) rule[key] = value;
        return Value(rule);
    }
    void setRules(const Array& rules, int coolOffMinutes = 0) {
        configure({{"beacon", Dictionary{{"beacon_data", Value(rules)},
                                         {"auto_beacon_notify", true},
                                         {"cooloff_period_minutes", coolOffMinutes}}}});
    }
    void setContent(const std::string& text = "Come in", const std::string& minor = "2") {
        service.put(fmt::format("beaconContent/{}/{}/1/{}", appKey(), kUUID, minor),
                    Dictionary{{"pushtext", text}, {"phash", "hash"}, {"metadata", Dictionary{{"aisle", 3}}}});
    }

    /// The identifier of the only monitored beacon region.
    std::string watched() {
        const auto regions = identifiers("monitoredRegions");
        EXPECT_EQ(regions.size(), 1U);
        return regions.empty() ? "" : regions[0];
    }
    static Value beacon(int minor = 2, int proximity = 2, double accuracy = 1.5) {
        return Dictionary{
            {"uuid", kUUID}, {"major", 1}, {"minor", minor}, {"proximity", proximity}, {"accuracy", accuracy}};
    }
    /// Delivers a ranging result for the first ranged region.
    void range(const Array& beacons) {
        const auto regions = phone->perform({{"do", "query"}, {"what", "rangedRegions"}});
        ASSERT_FALSE(regions.empty());
        phone->perform({{"do", "range"}, {"region", regions[0]}, {"beacons", Value(beacons)}});
        phone->settle();
    }
    void rangeAfter(double seconds) {
        pass(seconds);
        range({beacon()});
    }
    Dictionary lastRequest(const std::string& endpoint) const {
        const auto asked = service.requests(endpoint);
        auto payload = asked.empty() ? Dictionary() : asked.back().at("payload").get_ref<const Dictionary&>();
        payload.erase("deviceData");
        return payload;
    }
    Array stored(const std::string& name) const { return service.get(name).at(name).get<Array>(); }
};

TEST_F(BeaconsTest, RulesAreMonitoredOnceAndRangedWhileInside) {
    setRules({rule("message;data"), rule("data")});
    begin();
    const auto region = kUUID + "_1_2";
    EXPECT_EQ(identifiers("monitoredRegions"), Texts{region});
    const auto monitored = phone->perform({{"do", "query"}, {"what", "monitoredRegions"}});
    EXPECT_EQ(monitored[0]["major"], Value(1));
    EXPECT_EQ(monitored[0]["minor"], Value(2));
    EXPECT_EQ(monitored[0]["notifyEntryStateOnDisplay"], Value(true));
    this->region(region, "enter");
    EXPECT_EQ(identifiers("rangedRegions"), Texts{region});
    this->region(region, "exit");
    EXPECT_EQ(identifiers("rangedRegions"), Texts{});
}

TEST_F(BeaconsTest, BeaconMessagesCarryPhashAndMetadata) {
    setRules({rule("message")});
    setContent();
    begin();
    region(watched(), "enter");
    range({beacon()});
    Dictionary asked{{"getContent", true}, {"contentType", "interstitial, local"}};
    asked["ibeacons"] = Array{Dictionary{{"uuid", kUUID}, {"major", 1}, {"minor", 2}}};
    EXPECT_EQ(Value(lastRequest("beaconContent")), Value(asked));
    ASSERT_EQ(shown().size(), 1U);
    EXPECT_EQ(shown()[0].at("alertBody"), Value("Come in"));
    EXPECT_EQ(shown()[0].at("userInfo"), Value(Dictionary{{"p", "hash"}, {"aisle", 3}}));
    state("background");
    rangeAfter(1);
    EXPECT_EQ(lastRequest("beaconContent").at("contentType"), Value("local"));
}

TEST_F(BeaconsTest, TheClosestBeaconApplies) {
    setRules({rule("message", {{"minor", "*"}})});
    setContent("first", "1");
    setContent("second", "2");
    begin();
    region(watched(), "enter");
    range({beacon(1, 3, 9.5), beacon(2, 1, 0.4), beacon(3, 0, -1)});
    EXPECT_EQ(shownTexts(), Texts{"second"});
}

TEST_F(BeaconsTest, MessageLimitsHoldAcrossRestarts) {
    setRules({rule("message", {{"message_count", 2}})});
    setContent();
    begin();
    region(watched(), "enter");
    range({beacon()});
    rangeAfter(1);
    EXPECT_EQ(shown().size(), 2U);
    restart();
    region(watched(), "enter");
    for (int i = 0; i < 3; ++i) rangeAfter(1);
    // Intended: a period admits one message more than the limit.
    EXPECT_EQ(shown().size(), 1U);
    EXPECT_EQ(lastRequest("beaconContent").at("getContent"), Value(false));
    EXPECT_EQ(requests("beaconContent"), 5U);
    // Each request checks the limit twice.
    EXPECT_GE(countLog("Maximum message count reached for rule: " + kUUID + "_1_2"), 2);
    rangeAfter(3600);
    EXPECT_EQ(shown().size(), 2U);
}

TEST_F(BeaconsTest, CoolOffHoldsAcrossRestartsAndStopsRanging) {
    setRules({rule("message")}, 10);
    setContent();
    begin();
    region(watched(), "enter");
    range({beacon()});
    EXPECT_EQ(shown().size(), 1U);
    rangeAfter(300);
    EXPECT_EQ(requests("beaconContent"), 1U);
    EXPECT_EQ(countLog("Stopping ranging due to all ranged beacons being in cool off mode:"), 1);
    EXPECT_EQ(identifiers("rangedRegions"), Texts{});
    restart();
    region(watched(), "enter");
    rangeAfter(299);
    EXPECT_EQ(requests("beaconContent"), 1U);
    region(watched(), "exit");
    region(watched(), "enter");
    rangeAfter(2);
    EXPECT_EQ(requests("beaconContent"), 2U);
    EXPECT_EQ(shown().size(), 1U);
}

TEST_F(BeaconsTest, DefaultMessageIsShownWithoutANetwork) {
    setRules({rule("message", {{"default_message", "Welcome anyway"}})});
    setContent();
    begin();
    region(watched(), "enter");
    fail("beaconContent");
    range({beacon()});
    ASSERT_EQ(shown().size(), 1U);
    EXPECT_EQ(shown()[0].at("alertBody"), Value("Welcome anyway"));
    EXPECT_EQ(shown()[0].at("userInfo"), Value(Dictionary{}));
    EXPECT_EQ(countLog("Error getting beacon content from server:"), 1);
    service.remove("faults");
    rangeAfter(1);
    EXPECT_EQ(shownTexts(), (Texts{"Welcome anyway", "Come in"}));
}

TEST_F(BeaconsTest, ForbiddenDefaultMessagesAreNotShown) {
    setRules({rule("message", {{"default_message", "no"}, {"show_default_if_no_network", false}})});
    begin();
    region(watched(), "enter");
    fail("beaconContent", "garbage");
    range({beacon()});
    EXPECT_EQ(requests("beaconContent"), 1U);
    EXPECT_TRUE(shown().empty());
}

TEST_F(BeaconsTest, VisitsEndAfterARestart) {
    setRules({rule("data", {{"minor", "*"}})});
    begin();
    region(watched(), "enter");
    const auto start = lastRequest("beaconEntry");
    EXPECT_EQ(Value(start), Value(Dictionary{{"timestamp", fmt::format("{:.0f}", now * 1000)},
                                             {"sessionId", start.at("sessionId")},
                                             {"uuid", kUUID},
                                             {"major", "1"},
                                             {"minor", "*"}}));
    pass(60);
    restart();
    pass(60);
    region(watched(), "exit");
    auto end = start;
    end["timestamp"] = fmt::format("{:.0f}", now * 1000);
    EXPECT_EQ(Value(lastRequest("beaconExit")), Value(end));
    const auto visits = stored("beaconSessions");
    ASSERT_EQ(visits.size(), 1U);
    EXPECT_EQ(visits[0].at("sessionId"), start.at("sessionId"));
    EXPECT_EQ(visits[0].at("endTime").get<double>() - visits[0].at("startTime").get<double>(), 120'000);
    // The visit is not closed again.
    region(watched(), "exit");
    EXPECT_EQ(requests("beaconExit"), 1U);
    EXPECT_EQ(countLog("No previous beacon region session data found for region:"), 1);
}

TEST_F(BeaconsTest, A30thRangingResultSendsASummary) {
    setRules({rule("data", {{"minor", "*"}})});
    begin();
    region(watched(), "enter");
    for (int i = 0; i < 29; ++i) range({beacon(2, i < 20 ? 2 : 3), beacon(7, 1)});
    EXPECT_EQ(requests("beaconSession"), 0U);
    range({beacon(2, 3), beacon(7, 1)});
    const auto word = [](int minor, const char* proximity) {
        return Value(Dictionary{{"uuid", kUUID}, {"major", 1}, {"minor", minor}, {"proximity", proximity}});
    };
    auto summary = lastRequest("beaconSession");
    std::sort(summary.at("beacons").begin(), summary.at("beacons").end(), [](const Value& left, const Value& right) {
        return left.at("minor").get<int>() < right.at("minor").get<int>();
    });
    // The least frequent proximity.
    EXPECT_EQ(Value(summary), Value(Dictionary{{"beacons", Value(Array{word(2, "far"), word(7, "immediate")})},
                                               {"timestamp", fmt::format("{:.0f}", now * 1000)},
                                               {"sessionId", lastRequest("beaconEntry").at("sessionId")}}));
    for (int i = 0; i < 30; ++i) range({beacon()});
    EXPECT_EQ(requests("beaconSession"), 2U);
    EXPECT_EQ(stored("beaconSummaries").size(), 2U);
}

TEST_F(BeaconsTest, Monitors20GeofencesBesideTheBeacons) {
    configure({{"geo_regions", Dictionary{}},
               {"beacon", Dictionary{{"beacon_data", Array{rule("message;data")}}, {"auto_beacon_notify", true}}}});
    Array regions;
    for (int i = 0; i < 40; ++i) {
        regions.push_back(Dictionary{{"id", i}, {"latitude", 59.0 + 0.01 * i}, {"longitude", 10}, {"radius", 100}});
    }
    service.put("regions/" + appKey(), Dictionary{{"regions", Value(regions)}});
    begin();
    moveTo(59.0, 10);
    EXPECT_EQ(identifiers("monitoredRegions").size(), 21U);
    moveTo(59.4, 10);
    const auto watched = identifiers("monitoredRegions");
    EXPECT_EQ(watched.size(), 21U);
    EXPECT_EQ(std::count(watched.begin(), watched.end(), kUUID + "_1_2"), 1);
    region(kUUID + "_1_2", "enter");
    EXPECT_EQ(requests("beaconEntry"), 1U);
    EXPECT_EQ(requests("geoContent"), 0U);
}

TEST_F(BeaconsTest, ChangedRulesChangeTheMonitoredRegions) {
    setRules({rule("message;data")});
    begin();
    EXPECT_EQ(watched(), kUUID + "_1_2");
    setRules({rule("message;data", {{"minor", 5}})});
    restart();
    EXPECT_EQ(watched(), kUUID + "_1_5");
}

TEST_F(BeaconsTest, OnlyValidRulesAreMonitored) {
    setRules({Value(5), Value(nullptr), Value(Dictionary{}), rule("message", {{"uuid", "no uuid"}}),
              rule("data", {{"beacon_type", "other"}}), rule("odd"), rule("message", {{"priority", nullptr}})});
    setContent();
    begin();
    EXPECT_EQ(watched(), kUUID + "_1_2");
    EXPECT_GE(countLog("no uuid seems to be an invalid UUID, beacon config ignored"), 1);
    region(watched(), "enter");
    range({beacon(2, 77, -5), beacon()});
    EXPECT_EQ(phone->end(), 0);
}

TEST_F(BeaconsTest, VisitsHoldBackgroundTimeUntilItExpires) {
    setRules({rule("data")});
    begin();
    region(watched(), "inside");
    EXPECT_EQ(countLog("Inside beacon region but did not record an enter event:"), 1);
    for (const auto* event : {"enter", "inside", "inside"}) region(watched(), event);
    EXPECT_EQ(countLog("started background task."), 1);
    phone->perform({{"do", "expireBackgroundTasks"}});
    EXPECT_EQ(countLog("expired background task."), 1);
    region(watched(), "inside");
    EXPECT_EQ(countLog("started background task."), 2);
}

}  // namespace

}  // namespace vorlane

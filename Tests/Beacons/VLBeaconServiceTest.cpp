#include "Beacons/VLBeaconService.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "Categories/CLBeaconRegion+VLRegionId.h"
#include "Platform/CLCircularRegion.h"
#include "Tests/Beacons/BeaconTest.h"
#include "Tracking/VLConfigService.h"

namespace vorlane {

namespace {

using Texts = std::vector<std::string>;

class VLBeaconServiceTest : public BeaconTest {
protected:
    VLBeaconServiceTest() { restart(); }

    /// A new process, without a configuration: only the files and the phone's regions are left.
    void restart() {
        configService = std::make_shared<VLConfigService>(settings, urlBuilder, urlSession);
        beaconsConfig = std::make_shared<VLBeaconsConfig>(settings);
        sessions = makeSessions(beaconsConfig);
        service = std::make_shared<VLBeaconService>(phone().locationManager(), settings, configService, beaconsConfig,
                                                    sessions);
    }
    void load(const Dictionary& configs) {
        configService->loadConfigWithCompletion(nullptr);
        session().answer("/config/application/ios/", 200, Value(Dictionary{{"configs", configs}}).dump());
        phone().settle();
        before = session().requests().size();
    }
    void loadRules(const Array& rules) { load({{"beacon", configured(rules, {{"cooloff_period_minutes", 10}})}}); }

    /// A restart with these rules, which are then monitored.
    void begin(const Array& rules) {
        restart();
        loadRules(rules);
        service->getBeaconsConfig(nullptr);
        log().clear();
    }

    Texts monitored() {
        Texts identifiers;
        for (const auto& region : manager().monitoredRegions()) identifiers.push_back(region->identifier());
        std::ranges::sort(identifiers);
        return identifiers;
    }
    Texts ranged() {
        Texts identifiers;
        for (const auto& region : manager().rangedRegions()) identifiers.push_back(region->identifier());
        return identifiers;
    }
    /// Those that the beacons led to.
    Texts requestedPaths() {
        Texts paths;
        const auto requests = session().requests();
        for (std::size_t i = before; i < requests.size(); ++i) {
            const auto url = requests[i].request.URL.absoluteString();
            paths.push_back(url.substr(url.find("/K/T/") + 5));
        }
        return paths;
    }
    static std::string id(const std::string& rest) { return kUUID + rest; }
    /// How log lines show a region.
    static std::string text(const std::string& identifier, const std::string& major, const std::string& minor) {
        return "CLBeaconRegion (identifier:'" + identifier + "', uuid:" + kUUID + ", major:" + major +
               ", minor:" + minor + ")";
    }

    std::shared_ptr<VLConfigService> configService;
    std::shared_ptr<VLBeaconsConfig> beaconsConfig;
    std::shared_ptr<VLBeaconRegionSessions> sessions;
    std::shared_ptr<VLBeaconService> service;
    std::size_t before = 0;
    int answered = 0;
    std::optional<std::string> answer;
    std::int64_t flag = -1;
    VLBeaconService::ConfigHandler handler = [this](const std::optional<std::string>& config, std::int64_t given) {
        ++answered;
        answer = config;
        flag = given;
    };
};

TEST_F(VLBeaconServiceTest, TheConfigurationIsStoredMonitoredAndHandedOver) {
    loadRules({rule("message;data")});
    service->getBeaconsConfig(handler);
    const auto configuration = configured({rule("message;data")}, {{"cooloff_period_minutes", 10}});
    EXPECT_EQ(answered, 1);
    EXPECT_EQ(answer, Value(configuration).dump());
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(settingsFile()["VL_SERVER_CONFIG"], Value(configuration));
    EXPECT_EQ(settingsFile()["VL_LAST_SERVER_CONFIG_UPDATE_TIME"], Value(phone().now()));
    EXPECT_EQ(monitored(), Texts{id("_1_2")});
    EXPECT_TRUE(ranged().empty());
}

TEST_F(VLBeaconServiceTest, WithoutAConfigurationNothingChanges) {
    service->getBeaconsConfig(handler);
    EXPECT_EQ(answered, 1);
    EXPECT_FALSE(answer);
    EXPECT_EQ(flag, 2);
    EXPECT_TRUE(settingsFile().is_null());
    begin({rule("data")});
    const auto stored = settingsFile();
    restart();
    for (const Value& wrong : {Value(nullptr), Value(1), Value("text"), Value(Array{})}) {
        load({{"beacon", wrong}});
        service->getBeaconsConfig(handler);
        EXPECT_FALSE(answer) << wrong;
        EXPECT_EQ(flag, 2) << wrong;
    }
    EXPECT_EQ(settingsFile(), stored);
    EXPECT_EQ(monitored(), Texts{id("_1_2")});
    service->getBeaconsConfig(nullptr);
}

TEST_F(VLBeaconServiceTest, AConfigurationThatComesLaterIsStillUsed) {
    service->getBeaconsConfig(nullptr);
    loadRules({rule("data")});
    service->getBeaconsConfig(nullptr);
    EXPECT_EQ(monitored(), Texts{id("_1_2")});
}

TEST_F(VLBeaconServiceTest, WithoutRulesTheMonitoredRegionsStay) {
    begin({rule("data")});
    restart();
    loadRules({rule("another type")});
    service->getBeaconsConfig(handler);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(monitored(), Texts{id("_1_2")});
    EXPECT_EQ(settingsFile()["VL_SERVER_CONFIG"]["beacon_data"].size(), 1U);
}

TEST_F(VLBeaconServiceTest, NullsOfTheConfigurationAreGone) {
    load({{"beacon", Dictionary{{"beacon_data", Array{rule("data"), Value(nullptr)}}, {"other", nullptr}}}});
    service->getBeaconsConfig(handler);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(settingsFile()["VL_SERVER_CONFIG"], Value(Dictionary{{"beacon_data", Array{rule("data")}}}));
    EXPECT_EQ(answer, Value(Dictionary{{"beacon_data", Array{rule("data")}}}).dump());
}

TEST_F(VLBeaconServiceTest, AConfigurationIsStaleAfterThreeMillionSixHundredThousandSeconds) {
    EXPECT_TRUE(service->isConfigStale());
    begin({rule("data")});
    const auto isStaleAfter = [this, stored = phone().now()](double seconds) {
        phone().setClock(stored + seconds);
        restart();
        return service->isConfigStale();
    };
    constexpr double kDay = 86400;
    EXPECT_FALSE(isStaleAfter(0));
    EXPECT_FALSE(isStaleAfter(3600));
    EXPECT_FALSE(isStaleAfter(40 * kDay));
    EXPECT_FALSE(isStaleAfter(3600000.0));
    EXPECT_TRUE(isStaleAfter(3600000.5));
    EXPECT_TRUE(isStaleAfter(42 * kDay));
}

TEST_F(VLBeaconServiceTest, RulesForMessagesAndForDataOfOneRegionGiveOne) {
    loadRules(
        {rule("message;data"), rule("data"), rule("message;data", {{"uuid", "b9407f30-f5f8-466e-aff9-25556b57fe6d"}})});
    service->getBeaconsConfig(nullptr);
    EXPECT_EQ(monitored(), Texts{id("_1_2")});
    EXPECT_EQ(logged("Attempting to monitor new beacon region:" + text(id("_1_2"), "1", "2")), 1);
    EXPECT_EQ(loggedPart("Attempting to monitor"), 1);
}

TEST_F(VLBeaconServiceTest, RegionsAreMonitoredWithTheirStateOnDisplay) {
    loadRules({rule("message", {{"minor", 1}, {"priority", 1}}), rule("message", {{"minor", 2}, {"priority", 2}}),
               rule("data", {{"minor", "*"}})});
    service->getBeaconsConfig(nullptr);
    // Rules for messages cover the whole UUID; the first of them gives the region its name.
    EXPECT_EQ(monitored(), (Texts{id("_1_*"), id("_1_2")}));
    for (const auto& monitoredRegion : manager().monitoredRegions()) {
        EXPECT_EQ(monitoredRegion->toDictionary()["notifyEntryStateOnDisplay"], Value(true));
    }
}

TEST_F(VLBeaconServiceTest, OnlyWhatChangesIsStartedAndStopped) {
    begin({rule("data", {{"minor", 1}}), rule("data", {{"minor", 2}})});
    restart();
    loadRules({rule("data", {{"minor", 2}}), rule("data", {{"minor", 3}})});
    service->getBeaconsConfig(nullptr);
    EXPECT_EQ(monitored(), (Texts{id("_1_2"), id("_1_3")}));
    EXPECT_EQ(logged("Skipped adding beacon region to monitoring since it's already being monitored:" +
                     text(id("_1_2"), "1", "2")),
              1);
    EXPECT_EQ(logged("Stopped monitoring beacon region since it is no longer exists within the beacon rules:" +
                     text(id("_1_1"), "1", "1")),
              1);
    EXPECT_EQ(logged("Attempting to monitor new beacon region:" + text(id("_1_3"), "1", "3")), 1);
    EXPECT_EQ(loggedPart("Attempting to monitor"), 1);
}

TEST_F(VLBeaconServiceTest, ARegionThatCoversTheSameIsKeptUnderItsOldName) {
    begin({rule("message", {{"minor", 5}})});
    EXPECT_EQ(monitored(), Texts{id("_1_5")});
    restart();
    loadRules({rule("message", {{"minor", 6}})});
    service->getBeaconsConfig(nullptr);
    EXPECT_EQ(monitored(), Texts{id("_1_5")});
}

TEST_F(VLBeaconServiceTest, OfTwoMonitoredRegionsThatCoverTheSameOneIsStopped) {
    manager().startMonitoringForRegion(region(1, 2, "A"));
    manager().startMonitoringForRegion(region(1, 2, "B"));
    begin({rule("data")});
    EXPECT_EQ(monitored().size(), 1U);
}

TEST_F(VLBeaconServiceTest, RegionsOfOtherKindsAreLeftAlone) {
    manager().startMonitoringForRegion(std::make_shared<CLCircularRegion>(CLLocationCoordinate2D{}, 1, "circle"));
    manager().startMonitoringForRegion(region(1, 9, "old"));
    begin({rule("data")});
    EXPECT_EQ(monitored(), (Texts{id("_1_2"), "circle"}));
}

TEST_F(VLBeaconServiceTest, MonitoringAgainChangesNothing) {
    begin({rule("data"), rule("message", {{"minor", 3}})});
    EXPECT_EQ(monitored(), (Texts{id("_1_2"), id("_1_3")}));
    service->getBeaconsConfig(nullptr);
    service->addBeaconRegions();
    EXPECT_EQ(monitored(), (Texts{id("_1_2"), id("_1_3")}));
    EXPECT_EQ(loggedPart("Skipped adding beacon region"), 4);
    EXPECT_EQ(loggedPart("Attempting to monitor") + loggedPart("Stopped monitoring"), 0);
}

TEST_F(VLBeaconServiceTest, OfTwoRegionsOfOneNameThePlatformKeepsTheLater) {
    begin({rule("message"), rule("data")});
    ASSERT_EQ(monitored(), Texts{id("_1_2")});
    EXPECT_EQ(manager().monitoredRegions()[0]->toDictionary()["minor"], Value(2));
}

TEST_F(VLBeaconServiceTest, OnlyInsideAsksForBackgroundTime) {
    begin({rule("data")});
    service->didEnterRegion(region(1, 2));
    for (const auto state : {CLRegionState::Unknown, CLRegionState::Outside, static_cast<CLRegionState>(9)}) {
        service->didDetermineState(state, region(1, 2));
    }
    phone().settle();
    const auto hasTask = [this] { return loggedPart("started background task.") > 0; };
    EXPECT_FALSE(hasTask());
    service->didDetermineState(CLRegionState::Inside, region(1, 2));
    EXPECT_TRUE(hasTask());
}

TEST_F(VLBeaconServiceTest, EnteringStartsRangingAndLeavingStopsIt) {
    begin({rule("data")});
    service->didEnterRegion(region(1, 2));
    EXPECT_EQ(ranged(), Texts{"R"});
    EXPECT_EQ(requestedPaths(), Texts{"session/beacon/region/entry"});
    EXPECT_EQ(logged("DidEnterRegion called for region:" + text("R", "1", "2")), 1);
    service->didExitRegion(region(1, 2));
    EXPECT_TRUE(ranged().empty());
    EXPECT_EQ(requestedPaths(), (Texts{"session/beacon/region/entry", "session/beacon/region/exit"}));
    EXPECT_EQ(logged("DidExitRegion called for region:" + text("R", "1", "2")), 1);
}

TEST_F(VLBeaconServiceTest, ARegionOfNoRuleIsRangedAllTheSame) {
    begin({rule("data")});
    service->didEnterRegion(region(8, 8));
    EXPECT_EQ(ranged(), Texts{"R"});
    service->rangingBeacons({beacon()}, region(8, 8));
    service->didExitRegion(region(8, 8));
    EXPECT_TRUE(ranged().empty());
    EXPECT_TRUE(requestedPaths().empty());
}

TEST_F(VLBeaconServiceTest, RangedBeaconsReachTheRegionsSession) {
    begin({rule("message")});
    service->rangingBeacons({beacon(2), beacon(3)}, region());
    EXPECT_EQ(requestedPaths(), Texts{"ibeacon"});
    const std::string one = "CLBeacon (uuid:" + std::string(kUUID) + ", major:1, minor:";
    const std::string rest = ", proximity:2, accuracy:1.50)";
    EXPECT_EQ(logged("Beacons Found: [" + one + "2" + rest + ", " + one + "3" + rest + "]"), 1);
    service->rangingBeacons({}, region());
    EXPECT_EQ(logged("Beacons Found: []"), 1);
    answerContent("Come in");
    EXPECT_EQ(shown(), Texts{"Come in"});
}

TEST_F(VLBeaconServiceTest, AWholeVisitSurvivesARestartBetweenAnyTwoSteps) {
    const Array rules{rule("message;data", {{"message_count", 0}, {"time_period", 24}})};
    begin(rules);
    service->didEnterRegion(region(1, 2));
    const auto visit = session().lastRequest().payload()["sessionId"];
    begin(rules);
    EXPECT_EQ(monitored(), Texts{id("_1_2")});
    service->rangingBeacons({beacon()}, region(1, 2));
    EXPECT_EQ(session().lastRequest().payload()["getContent"], Value(true));
    answerContent();
    EXPECT_EQ(shown(), Texts{"Hello"});
    begin(rules);
    // In its cool-off.
    phone().advance(600);
    service->rangingBeacons({beacon()}, region(1, 2));
    EXPECT_TRUE(requestedPaths().empty());
    begin(rules);
    // Past its cool-off, but at its limit.
    phone().advance(1);
    service->rangingBeacons({beacon()}, region(1, 2));
    EXPECT_EQ(session().lastRequest().payload()["getContent"], Value(false));
    answerContent();
    EXPECT_EQ(shown().size(), 1U);
    begin(rules);
    service->didExitRegion(region(1, 2));
    EXPECT_EQ(session().lastRequest().payload()["sessionId"], visit);
    EXPECT_EQ(requestedPaths(), Texts{"session/beacon/region/exit"});
    begin(rules);
    service->didExitRegion(region(1, 2));
    EXPECT_TRUE(requestedPaths().empty());
    EXPECT_EQ(logged("No previous beacon region session data found for region:" + text("R", "1", "2")), 1);
}

TEST_F(VLBeaconServiceTest, BeforeTheConfigurationIsThereTheStoredRulesCount) {
    begin({rule("message;data")});
    restart();
    service->didEnterRegion(region(1, 2));
    service->rangingBeacons({beacon()}, region(1, 2));
    EXPECT_EQ(requestedPaths(), (Texts{"session/beacon/region/entry", "ibeacon"}));
}

TEST_F(VLBeaconServiceTest, ManyBeaconsAndRulesAreAllTried) {
    Array rules;
    for (int i = 0; i < 100; ++i) {
        rules.push_back(rule("message", {{"minor", i}, {"priority", i}, {"alert_range", i == 37 ? "any" : "far"}}));
    }
    begin(rules);
    std::vector<CLBeacon> beacons;
    for (std::uint16_t i = 0; i < 50; ++i) beacons.push_back(beacon(i, CLProximity::Far, 50.0 - i));
    service->rangingBeacons(beacons, region());
    EXPECT_EQ(session().lastRequest().payload()["ibeacons"][0]["minor"], Value(37));
    EXPECT_EQ(requestedPaths().size(), 1U);
}

TEST_F(VLBeaconServiceTest, HostileConfigurationsLeadToNothing) {
    const std::vector<Value> wrong{Value(nullptr), Value(true),        Value(-1),
                                   Value(1e300),   Value(""),          Value("*"),
                                   Value("1"),     Value(Array{1, 2}), Value(Dictionary{{"a", 1}})};
    const Texts keys{
        "type",        "beacon_type",   "uuid",        "major",       "minor",           "priority",
        "max_range_m", "message_count", "time_period", "alert_range", "default_message", "show_default_if_no_network"};
    for (const auto& key : keys) {
        Array rules;
        for (const auto& value : wrong) rules.push_back(rule("message;data", {{key, value}}));
        begin(rules);
        service->didEnterRegion(region(1, 2));
        service->rangingBeacons({beacon(), beacon(0, CLProximity::Unknown, -1)}, region(1, 2));
        service->didExitRegion(region(1, 2));
        phone().settle();
        const bool isNeeded = key == "type" || key == "beacon_type" || key == "uuid";
        const std::size_t expected = isNeeded ? 0 : key == "major" || key == "minor" ? 4 : 1;
        EXPECT_EQ(manager().monitoredRegions().size(), expected) << key;
    }
    for (const auto* key : {"beacon_data", "auto_beacon_notify", "cooloff_period_minutes"}) {
        for (const auto& value : wrong) {
            restart();
            load({{"beacon", configured({rule("message")}, {{key, value}})}});
            service->getBeaconsConfig(handler);
            EXPECT_EQ(flag, 1) << key << value;
            service->rangingBeacons({beacon()}, region());
        }
    }
}

}  // namespace

}  // namespace vorlane

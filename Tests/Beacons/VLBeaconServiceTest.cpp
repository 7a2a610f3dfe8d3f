#include "Beacons/VLBeaconService.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "Categories/CLBeaconRegion+VLRegionId.h"
#include "Platform/CLCircularRegion.h"
#include "Tests/Beacons/BeaconTest.h"
#include "Tracking/VLConfigService.h"

namespace vorlane {

namespace {

using Strings = std::vector<std::string>;

class VLBeaconServiceTest : public BeaconTest {
protected:
    VLBeaconServiceTest() { restart(); }

    /// Starts a process without a configuration. Only the files and the phone's regions remain.
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

    /// Restarts with these rules and monitors their regions.
    void begin(const Array& rules) {
        restart();
        loadRules(rules);
        service->getBeaconsConfig(nullptr);
        log().clear();
    }

    Strings monitored() {
        Strings identifiers;
        for (const auto& region : manager().monitoredRegions()) identifiers.push_back(region->identifier());
        std::ranges::sort(identifiers);
        return identifiers;
    }
    Strings ranged() {
        Strings identifiers;
        for (const auto& region : manager().rangedRegions()) identifiers.push_back(region->identifier());
        return identifiers;
    }
    /// The paths of the requests since the configuration was loaded.
    Strings requestedPaths() {
        Strings paths;
        const auto requests = session().requests();
        for (std::size_t i = before; i < requests.size(); ++i) {
            const auto url = requests[i].request.URL.absoluteString();
            paths.push_back(url.substr(url.find("/K/T/") + 5));
        }
        return paths;
    }
    static std::string id(const std::string& rest) { return kUUID + rest; }
    /// The form of a region in log lines.
    static std::string described(const std::string& identifier, const std::string& major, const std::string& minor) {
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

TEST_F(VLBeaconServiceTest, ConfigurationIsStoredAndPassedOn) {
    loadRules({rule("message;data")});
    service->getBeaconsConfig(handler);
    const auto configuration = configured({rule("message;data")}, {{"cooloff_period_minutes", 10}});
    EXPECT_EQ(answered, 1);
    EXPECT_EQ(answer, Value(configuration).dump());
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(settingsFile()["VL_SERVER_CONFIG"], Value(configuration));
    EXPECT_EQ(settingsFile()["VL_LAST_SERVER_CONFIG_UPDATE_TIME"], Value(phone().now()));
    EXPECT_EQ(monitored(), Strings{id("_1_2")});
    EXPECT_TRUE(ranged().empty());
}

TEST_F(VLBeaconServiceTest, NothingChangesWithoutAConfiguration) {
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
    EXPECT_EQ(monitored(), Strings{id("_1_2")});
    service->getBeaconsConfig(nullptr);
}

TEST_F(VLBeaconServiceTest, LaterConfigurationIsUsed) {
    service->getBeaconsConfig(nullptr);
    loadRules({rule("data")});
    service->getBeaconsConfig(nullptr);
    EXPECT_EQ(monitored(), Strings{id("_1_2")});
}

TEST_F(VLBeaconServiceTest, RegionsStayWithoutRules) {
    begin({rule("data")});
    restart();
    loadRules({rule("another type")});
    service->getBeaconsConfig(handler);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(monitored(), Strings{id("_1_2")});
    EXPECT_EQ(settingsFile()["VL_SERVER_CONFIG"]["beacon_data"].size(), 1U);
}

TEST_F(VLBeaconServiceTest, ConfigurationIsStoredWithoutNulls) {
    load({{"beacon", Dictionary{{"beacon_data", Array{rule("data"), Value(nullptr)}}, {"other", nullptr}}}});
    service->getBeaconsConfig(handler);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(settingsFile()["VL_SERVER_CONFIG"], Value(Dictionary{{"beacon_data", Array{rule("data")}}}));
    EXPECT_EQ(answer, Value(Dictionary{{"beacon_data", Array{rule("data")}}}).dump());
}

TEST_F(VLBeaconServiceTest, ConfigurationIsStaleAfter3600000Seconds) {
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

TEST_F(VLBeaconServiceTest, RulesOfOneRegionMonitorItOnce) {
    loadRules(
        {rule("message;data"), rule("data"), rule("message;data", {{"uuid", "b9407f30-f5f8-466e-aff9-25556b57fe6d"}})});
    service->getBeaconsConfig(nullptr);
    EXPECT_EQ(monitored(), Strings{id("_1_2")});
    EXPECT_EQ(logged("Attempting to monitor new beacon region:" + described(id("_1_2"), "1", "2")), 1);
    EXPECT_EQ(loggedPart("Attempting to monitor"), 1);
}

TEST_F(VLBeaconServiceTest, RegionsNotifyEntryStateOnDisplay) {
    loadRules({rule("message", {{"minor", 1}, {"priority", 1}}), rule("message", {{"minor", 2}, {"priority", 2}}),
               rule("data", {{"minor", "*"}})});
    service->getBeaconsConfig(nullptr);
    // Rules for messages cover the whole UUID. The first one gives the region its identifier.
    EXPECT_EQ(monitored(), (Strings{id("_1_*"), id("_1_2")}));
    for (const auto& monitoredRegion : manager().monitoredRegions()) {
        EXPECT_EQ(monitoredRegion->toDictionary()["notifyEntryStateOnDisplay"], Value(true));
    }
}

TEST_F(VLBeaconServiceTest, OnlyChangedRegionsAreStartedAndStopped) {
    begin({rule("data", {{"minor", 1}}), rule("data", {{"minor", 2}})});
    restart();
    loadRules({rule("data", {{"minor", 2}}), rule("data", {{"minor", 3}})});
    service->getBeaconsConfig(nullptr);
    EXPECT_EQ(monitored(), (Strings{id("_1_2"), id("_1_3")}));
    EXPECT_EQ(logged("Skipped adding beacon region to monitoring since it's already being monitored:" +
                     described(id("_1_2"), "1", "2")),
              1);
    EXPECT_EQ(logged("Stopped monitoring beacon region since it is no longer exists within the beacon rules:" +
                     described(id("_1_1"), "1", "1")),
              1);
    EXPECT_EQ(logged("Attempting to monitor new beacon region:" + described(id("_1_3"), "1", "3")), 1);
    EXPECT_EQ(loggedPart("Attempting to monitor"), 1);
}

TEST_F(VLBeaconServiceTest, EqualRegionKeepsItsOldIdentifier) {
    begin({rule("message", {{"minor", 5}})});
    EXPECT_EQ(monitored(), Strings{id("_1_5")});
    restart();
    loadRules({rule("message", {{"minor", 6}})});
    service->getBeaconsConfig(nullptr);
    EXPECT_EQ(monitored(), Strings{id("_1_5")});
}

TEST_F(VLBeaconServiceTest, SecondRegionOfTheSameBeaconsIsStopped) {
    manager().startMonitoringForRegion(region(1, 2, "A"));
    manager().startMonitoringForRegion(region(1, 2, "B"));
    begin({rule("data")});
    EXPECT_EQ(monitored().size(), 1U);
}

TEST_F(VLBeaconServiceTest, OtherKindsOfRegionsStay) {
    manager().startMonitoringForRegion(std::make_shared<CLCircularRegion>(CLLocationCoordinate2D{}, 1, "circle"));
    manager().startMonitoringForRegion(region(1, 9, "old"));
    begin({rule("data")});
    EXPECT_EQ(monitored(), (Strings{id("_1_2"), "circle"}));
}

TEST_F(VLBeaconServiceTest, RepeatedMonitoringChangesNothing) {
    begin({rule("data"), rule("message", {{"minor", 3}})});
    EXPECT_EQ(monitored(), (Strings{id("_1_2"), id("_1_3")}));
    service->getBeaconsConfig(nullptr);
    service->addBeaconRegions();
    EXPECT_EQ(monitored(), (Strings{id("_1_2"), id("_1_3")}));
    EXPECT_EQ(loggedPart("Skipped adding beacon region"), 4);
    EXPECT_EQ(loggedPart("Attempting to monitor") + loggedPart("Stopped monitoring"), 0);
}

TEST_F(VLBeaconServiceTest, LostRegionsAreStartedAgain) {
    begin({rule("data"), rule("data", {{"minor", 3}})});
    for (const auto& lost : manager().monitoredRegions()) manager().stopMonitoringForRegion(lost);
    service->getBeaconsConfig(nullptr);
    EXPECT_EQ(monitored(), (Strings{id("_1_2"), id("_1_3")}));
}

TEST_F(VLBeaconServiceTest, StartsNoMoreRegionsThanThePlatformMonitors) {
    Array rules;
    for (int i = 0; i < 2000; ++i) rules.push_back(rule("data", {{"minor", i}}));
    begin(rules);
    const std::size_t limit = manager().maximumMonitoredRegionCount();
    EXPECT_EQ(manager().monitoredRegions().size(), limit);
    EXPECT_TRUE(manager().monitoredRegion(id("_1_0")));
    service->addBeaconRegions();
    EXPECT_EQ(manager().monitoredRegions().size(), limit);
    EXPECT_EQ(log().count("Could not add 1500 beacon regions for monitoring due to the platform's limit of 500 regions",
                          VLLogLevel::Warn),
              1);
    EXPECT_EQ(loggedPart("Attempting to monitor"), 0);
}

/// A rule for messages and a rule for data with one identifier give different regions.
class VLBeaconVisitTest : public VLBeaconServiceTest {
protected:
    Value monitoredMinor() { return Value(manager().monitoredRegion(id("_1_2"))->toDictionary())["minor"]; }
    /// Enters the monitored region, and returns the identifier of the visit.
    Value enter() {
        service->didEnterRegion(monitoredRegion());
        return session().lastRequest().payload()["sessionId"];
    }
    void leave() { service->didExitRegion(monitoredRegion()); }
    std::shared_ptr<CLBeaconRegion> monitoredRegion() {
        return std::dynamic_pointer_cast<CLBeaconRegion>(manager().monitoredRegion(id("_1_2")));
    }
    void expectTheEndOf(const Value& visit) {
        ASSERT_EQ(requestedPaths().size(), 1U);
        EXPECT_EQ(requestedPaths()[0], "session/beacon/region/exit");
        EXPECT_EQ(session().lastRequest().payload()["sessionId"], visit);
        EXPECT_TRUE(sessionsFile().empty());
    }
    void forgetRequests() { before = session().requests().size(); }
};

TEST_F(VLBeaconVisitTest, RegionOfTheDataRuleIsMonitored) {
    for (const auto& rules :
         {Array{rule("message"), rule("data")}, Array{rule("data"), rule("message")},
          Array{rule("message;data", {{"priority", 9}}), rule("message")}, Array{rule("message;data")}}) {
        begin(rules);
        EXPECT_EQ(monitored(), Strings{id("_1_2")});
        EXPECT_EQ(monitoredMinor(), Value(2));
    }
}

TEST_F(VLBeaconVisitTest, VisitEndsAfterSeveralConfigurations) {
    const Array rules{rule("message"), rule("data")};
    begin(rules);
    const auto visit = enter();
    for (int i = 0; i < 3; ++i) {
        loadRules(rules);
        service->getBeaconsConfig(nullptr);
        EXPECT_EQ(monitoredMinor(), Value(2));
    }
    begin(rules);
    leave();
    expectTheEndOf(visit);
}

TEST_F(VLBeaconVisitTest, DataRuleReplacesTheRegionOfTheMessageRule) {
    begin({rule("message")});
    EXPECT_TRUE(monitoredMinor().is_null());
    begin({rule("message"), rule("data")});
    EXPECT_EQ(monitoredMinor(), Value(2));
    const auto visit = enter();
    service->getBeaconsConfig(nullptr);
    forgetRequests();
    leave();
    expectTheEndOf(visit);
}

TEST_F(VLBeaconVisitTest, VisitEndsWithTheMonitoringOfItsRegion) {
    begin({rule("data")});
    const auto visit = enter();
    for (const auto& later : {Array{rule("message")}, Array{rule("data", {{"minor", 9}})}}) {
        begin({rule("data")});
        sessions->getBeaconRegionSessionData(region(1, 2))->setId(visit.get<std::string>());
        restart();
        loadRules(later);
        service->getBeaconsConfig(nullptr);
        expectTheEndOf(visit);
        EXPECT_TRUE(ranged().empty());
    }
}

TEST_F(VLBeaconVisitTest, StoppingARegionWithoutAVisitReportsNothing) {
    begin({rule("data")});
    begin({rule("data", {{"minor", 9}})});
    EXPECT_TRUE(requestedPaths().empty());
    EXPECT_EQ(loggedPart("No previous beacon region session data"), 0);
}

TEST_F(VLBeaconVisitTest, VisitEndsAtTheExitAfterTheDataRuleIsGone) {
    const Dictionary whole{{"major", "*"}, {"minor", "*"}};
    begin({rule("message", whole), rule("data", whole)});
    const auto covered = region(std::nullopt, std::nullopt, id("_*_*"));
    service->didEnterRegion(covered);
    const auto visit = session().lastRequest().payload()["sessionId"];
    begin({rule("message", whole)});
    service->didExitRegion(covered);
    expectTheEndOf(visit);
}

TEST_F(VLBeaconVisitTest, VisitContinuesInAnotherRegionOfTheSameBeacons) {
    manager().startMonitoringForRegion(region(1, 2, "A"));
    manager().startMonitoringForRegion(region(1, 2, "B"));
    sessions->getBeaconRegionSessionData(region(1, 2))->setId("open");
    begin({rule("data")});
    EXPECT_EQ(monitored().size(), 1U);
    EXPECT_TRUE(requestedPaths().empty());
}

TEST_F(VLBeaconServiceTest, OnlyInsideBeginsABackgroundTask) {
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

TEST_F(VLBeaconServiceTest, EnterStartsRangingAndExitStopsIt) {
    begin({rule("data")});
    service->didEnterRegion(region(1, 2));
    EXPECT_EQ(ranged(), Strings{"R"});
    EXPECT_EQ(requestedPaths(), Strings{"session/beacon/region/entry"});
    EXPECT_EQ(logged("DidEnterRegion called for region:" + described("R", "1", "2")), 1);
    service->didExitRegion(region(1, 2));
    EXPECT_TRUE(ranged().empty());
    EXPECT_EQ(requestedPaths(), (Strings{"session/beacon/region/entry", "session/beacon/region/exit"}));
    EXPECT_EQ(logged("DidExitRegion called for region:" + described("R", "1", "2")), 1);
}

TEST_F(VLBeaconServiceTest, RegionWithoutARuleIsRanged) {
    begin({rule("data")});
    service->didEnterRegion(region(8, 8));
    EXPECT_EQ(ranged(), Strings{"R"});
    service->rangingBeacons({beacon()}, region(8, 8));
    service->didExitRegion(region(8, 8));
    EXPECT_TRUE(ranged().empty());
    EXPECT_TRUE(requestedPaths().empty());
}

TEST_F(VLBeaconServiceTest, RangedBeaconsReachTheSession) {
    begin({rule("message")});
    service->rangingBeacons({beacon(2), beacon(3)}, region());
    EXPECT_EQ(requestedPaths(), Strings{"ibeacon"});
    const std::string one = "CLBeacon (uuid:" + std::string(kUUID) + ", major:1, minor:";
    const std::string rest = ", proximity:2, accuracy:1.50)";
    EXPECT_EQ(logged("Beacons Found: [" + one + "2" + rest + ", " + one + "3" + rest + "]"), 1);
    service->rangingBeacons({}, region());
    EXPECT_EQ(logged("Beacons Found: []"), 1);
    answerContent("Come in");
    EXPECT_EQ(shown(), Strings{"Come in"});
}

TEST_F(VLBeaconServiceTest, VisitSurvivesARestartBetweenSteps) {
    const Array rules{rule("message;data", {{"message_count", 0}, {"time_period", 24}})};
    begin(rules);
    service->didEnterRegion(region(1, 2));
    const auto visit = session().lastRequest().payload()["sessionId"];
    begin(rules);
    EXPECT_EQ(monitored(), Strings{id("_1_2")});
    service->rangingBeacons({beacon()}, region(1, 2));
    EXPECT_EQ(session().lastRequest().payload()["getContent"], Value(true));
    answerContent();
    EXPECT_EQ(shown(), Strings{"Hello"});
    begin(rules);
    // In cool-off.
    phone().advance(600);
    service->rangingBeacons({beacon()}, region(1, 2));
    EXPECT_TRUE(requestedPaths().empty());
    begin(rules);
    // After the cool-off, but at the message limit.
    phone().advance(1);
    service->rangingBeacons({beacon()}, region(1, 2));
    EXPECT_EQ(session().lastRequest().payload()["getContent"], Value(false));
    answerContent();
    EXPECT_EQ(shown().size(), 1U);
    begin(rules);
    service->didExitRegion(region(1, 2));
    EXPECT_EQ(session().lastRequest().payload()["sessionId"], visit);
    EXPECT_EQ(requestedPaths(), Strings{"session/beacon/region/exit"});
    begin(rules);
    service->didExitRegion(region(1, 2));
    EXPECT_TRUE(requestedPaths().empty());
    EXPECT_EQ(logged("No previous beacon region session data found for region:" + described("R", "1", "2")), 1);
}

TEST_F(VLBeaconServiceTest, StoredRulesApplyBeforeTheConfiguration) {
    begin({rule("message;data")});
    restart();
    service->didEnterRegion(region(1, 2));
    service->rangingBeacons({beacon()}, region(1, 2));
    EXPECT_EQ(requestedPaths(), (Strings{"session/beacon/region/entry", "ibeacon"}));
}

TEST_F(VLBeaconServiceTest, TriesAllBeaconsAndRules) {
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

TEST_F(VLBeaconServiceTest, HostileConfigurationsAreHarmless) {
    const std::vector<Value> wrong{Value(nullptr), Value(true),        Value(-1),
                                   Value(1e300),   Value(""),          Value("*"),
                                   Value("1"),     Value(Array{1, 2}), Value(Dictionary{{"a", 1}})};
    const Strings keys{
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

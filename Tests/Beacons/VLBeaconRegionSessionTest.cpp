#include "Beacons/VLBeaconRegionSession.h"

#include <gtest/gtest.h>

#include "Beacons/VLBeaconRegionSessionData.h"
#include "Categories/CLBeaconRegion+VLRegionId.h"
#include "Tests/Beacons/BeaconTest.h"

namespace vorlane {

namespace {

using enum CLProximity;

class VLBeaconRegionSessionTest : public BeaconTest {
protected:
    /// The session of a ranged region.
    std::shared_ptr<VLBeaconRegionSession> sessionOf(const std::shared_ptr<CLBeaconRegion>& watched,
                                                     const Array& rules) {
        beaconsConfig = config(rules, {{"cooloff_period_minutes", 10}});
        sessions = makeSessions(beaconsConfig);
        manager().startRangingBeaconsInRegion(watched);
        return sessions->getSessionWithRegion(watched);
    }
    std::vector<std::string> requestedPaths() {
        std::vector<std::string> paths;
        for (const auto& request : session().requests()) {
            const auto url = request.request.URL.absoluteString();
            paths.push_back(url.substr(url.find("/K/T/") + 5));
        }
        return paths;
    }
    bool isRanged() { return !manager().rangedRegions().empty(); }

    std::shared_ptr<VLBeaconsConfig> beaconsConfig;
    std::shared_ptr<VLBeaconRegionSessions> sessions;
    std::vector<bool> answers;
    VLBeaconMessage::ContentHandler handler = [this](bool requested) { answers.push_back(requested); };
};

using Texts = std::vector<std::string>;

TEST_F(VLBeaconRegionSessionTest, TypesFollowTheRules) {
    const Array rules{rule("message"), rule("data", {{"minor", 3}}), rule("message;data", {{"minor", 4}})};
    const auto typesOf = [&](std::optional<std::uint16_t> major, std::optional<std::uint16_t> minor) {
        const auto made = sessionOf(region(major, minor), rules);
        return std::pair(made->isMessageType(), made->isDataType());
    };
    EXPECT_EQ(typesOf(std::nullopt, std::nullopt), std::pair(true, false));
    EXPECT_EQ(typesOf(1, 3), std::pair(false, true));
    EXPECT_EQ(typesOf(1, 4), std::pair(true, true));
    EXPECT_EQ(typesOf(1, 2), std::pair(false, false));
    EXPECT_EQ(typesOf(1, std::nullopt), std::pair(false, false));
}

TEST_F(VLBeaconRegionSessionTest, TypesSurviveANewConfiguration) {
    const auto made = sessionOf(region(1, 2), {rule("data")});
    beaconsConfig->isBeaconsFound(configured({}));
    EXPECT_TRUE(made->isDataType());
}

TEST_F(VLBeaconRegionSessionTest, DataRegionReportsItsVisit) {
    const auto made = sessionOf(region(1, 2), {rule("data")});
    made->didEnter();
    for (int i = 0; i < 30; ++i) made->rangingBeacons({beacon()}, handler);
    made->didExit();
    EXPECT_EQ(requestedPaths(), (Texts{"session/beacon/region/entry", "session/beacon", "session/beacon/region/exit"}));
    EXPECT_TRUE(answers.empty());
    EXPECT_TRUE(isRanged());
}

TEST_F(VLBeaconRegionSessionTest, MessageRegionRequestsContent) {
    const auto made = sessionOf(region(), {rule("message")});
    made->didEnter();
    EXPECT_TRUE(session().requests().empty());
    made->rangingBeacons({beacon()}, handler);
    EXPECT_EQ(requestedPaths(), Texts{"ibeacon"});
    answerContent();
    EXPECT_EQ(answers, std::vector{true});
    made->didExit();
    EXPECT_EQ(requestedPaths(), Texts{"ibeacon"});
    EXPECT_TRUE(sessionsFile().is_null());
    EXPECT_EQ(loggedPart("No previous beacon region session data"), 0);
}

TEST_F(VLBeaconRegionSessionTest, RegionOfBothTypesDoesBoth) {
    const auto made = sessionOf(region(1, 2), {rule("message;data")});
    made->didEnter();
    for (int i = 0; i < 30; ++i) made->rangingBeacons({beacon()}, handler);
    made->didExit();
    EXPECT_EQ(requestedPaths(),
              (Texts{"session/beacon/region/entry", "ibeacon", "session/beacon", "session/beacon/region/exit"}));
    EXPECT_EQ(made->beaconData().currentInterval(), 0);
    // All beacons are in cool-off, but the data needs ranging.
    EXPECT_TRUE(isRanged());
    EXPECT_EQ(loggedPart("Stopping ranging"), 0);
}

TEST_F(VLBeaconRegionSessionTest, RegionWithoutARuleDoesNothing) {
    const auto made = sessionOf(region(9, 9), {rule("message;data")});
    made->didEnter();
    made->rangingBeacons({beacon()}, handler);
    made->didExit();
    EXPECT_TRUE(session().requests().empty());
    EXPECT_TRUE(answers.empty());
    EXPECT_EQ(loggedPart(""), 0);
}

TEST_F(VLBeaconRegionSessionTest, RangingStopsOnceAllBeaconsAreInCoolOff) {
    const auto made = sessionOf(region(), {rule("message", {{"minor", "*"}})});
    made->rangingBeacons({beacon(1)}, handler);
    EXPECT_TRUE(isRanged());
    made->rangingBeacons({beacon(1)}, handler);
    EXPECT_FALSE(isRanged());
    EXPECT_EQ(answers, std::vector{false});
    EXPECT_EQ(logged("Stopping ranging due to all ranged beacons being in cool off mode: [CLBeacon "
                     "(uuid:B9407F30-F5F8-466E-AFF9-25556B57FE6D, major:1, minor:1, proximity:2, accuracy:1.50)]"),
              1);
}

TEST_F(VLBeaconRegionSessionTest, BeaconNotInCoolOffKeepsRangingOn) {
    const auto made = sessionOf(region(), {rule("message", {{"minor", "*"}, {"alert_range", "near"}})});
    made->rangingBeacons({beacon(1)}, handler);
    made->rangingBeacons({beacon(1), beacon(2, Far, 20)}, handler);
    EXPECT_TRUE(isRanged());
    EXPECT_EQ(answers, std::vector{false});
}

TEST_F(VLBeaconRegionSessionTest, EmptyResultIsIgnoredForMessages) {
    const auto made = sessionOf(region(), {rule("message")});
    made->rangingBeacons({}, handler);
    EXPECT_FALSE(made->beaconMessage()->isBeaconsInCooloff());
    EXPECT_TRUE(isRanged());
    EXPECT_TRUE(answers.empty());
}

TEST_F(VLBeaconRegionSessionTest, RangingStopsAgainBeforeTheExit) {
    const auto made = sessionOf(region(), {rule("message", {{"minor", "*"}})});
    made->rangingBeacons({beacon(1)}, handler);
    made->rangingBeacons({beacon(1)}, handler);
    manager().startRangingBeaconsInRegion(made->region());
    // A new beacon is ignored until the exit.
    made->rangingBeacons({beacon(2)}, handler);
    EXPECT_FALSE(isRanged());
    EXPECT_EQ(contentRequests(), 1U);
    EXPECT_EQ(loggedPart("Stopping ranging"), 2);
    made->didExit();
    made->rangingBeacons({beacon(2)}, handler);
    EXPECT_EQ(contentRequests(), 2U);
}

TEST_F(VLBeaconRegionSessionTest, CountsCarryOverToTheNextVisit) {
    const auto watched = region(1, 2);
    const auto made = sessionOf(watched, {rule("message;data")});
    made->didEnter();
    for (int i = 0; i < 29; ++i) made->rangingBeacons({beacon()}, nullptr);
    made->didExit();
    const auto again = sessions->getSessionWithRegion(region(1, 2, "another identifier"));
    EXPECT_EQ(again, made);
    again->didEnter();
    again->rangingBeacons({beacon()}, nullptr);
    EXPECT_EQ(requestedPaths().back(), "session/beacon");
}

TEST_F(VLBeaconRegionSessionTest, ExitClearsTheCoolOffFlag) {
    const auto made = sessionOf(region(), {rule("message", {{"minor", "*"}})});
    for (int i = 0; i < 2; ++i) made->rangingBeacons({beacon(1)}, nullptr);
    made->didEnter();
    EXPECT_TRUE(made->beaconMessage()->isBeaconsInCooloff());
    made->didExit();
    EXPECT_FALSE(made->beaconMessage()->isBeaconsInCooloff());
}

class VLBeaconRegionSessionsTest : public VLBeaconRegionSessionTest {
protected:
    void open(const std::shared_ptr<CLBeaconRegion>& watched) {
        sessions->getBeaconRegionSessionData(watched)->setId("open");
    }
    std::size_t tasks() { return phone().application()->backgroundTasks().size(); }
};

TEST_F(VLBeaconRegionSessionsTest, EqualRegionsShareASession) {
    sessionOf(region(), {rule("message")});
    const auto made = sessions->getSessionWithRegion(region(1, 2));
    EXPECT_EQ(sessions->getSessionWithRegion(region(1, 2, "another")), made);
    EXPECT_NE(sessions->getSessionWithRegion(region(1)), made);
    EXPECT_NE(sessions->getSessionWithRegion(region(1, 3)), made);
    EXPECT_EQ(made->beaconMessage()->region(), made->region());
    EXPECT_NE(sessions->getSessionWithRegion(region(1))->beaconMessage(), made->beaconMessage());
}

TEST_F(VLBeaconRegionSessionsTest, NoSessionWithoutRules) {
    beaconsConfig = config({rule("message")});
    sessions = makeSessions(beaconsConfig);
    beaconsConfig.reset();
    EXPECT_EQ(sessions->getSessionWithRegion(region(1, 2)), nullptr);
}

TEST_F(VLBeaconRegionSessionsTest, OpenSessionBeginsOneBackgroundTask) {
    sessionOf(region(), {rule("data")});
    open(region(1, 2));
    open(region(1, 3));
    sessions->startBackgroundTaskExtensionTime(region(1, 2));
    EXPECT_EQ(tasks(), 1U);
    EXPECT_EQ(logged("started background task."), 1);
    sessions->startBackgroundTaskExtensionTime(region(1, 2));
    sessions->startBackgroundTaskExtensionTime(region(1, 3));
    // A region without a session is not logged while a task is running.
    sessions->startBackgroundTaskExtensionTime(region(1, 9));
    EXPECT_EQ(tasks(), 1U);
    EXPECT_EQ(logged("started background task."), 1);
    EXPECT_EQ(loggedPart("Inside beacon region but did not record"), 0);
}

TEST_F(VLBeaconRegionSessionsTest, BackgroundTaskEndsWithItsExpiry) {
    sessionOf(region(), {rule("data")});
    open(region(1, 2));
    sessions->startBackgroundTaskExtensionTime(region(1, 2));
    sessions->getSessionWithRegion(region(1, 2))->didExit();
    session().answer(kExitPath, 200, "");
    phone().settle();
    EXPECT_EQ(tasks(), 1U);
    phone().application()->expireBackgroundTasks();
    EXPECT_EQ(tasks(), 0U);
    EXPECT_EQ(logged("expired background task."), 1);
    open(region(1, 2));
    sessions->startBackgroundTaskExtensionTime(region(1, 2));
    EXPECT_EQ(tasks(), 1U);
}

TEST_F(VLBeaconRegionSessionsTest, NoBackgroundTaskWithoutAnEnter) {
    sessionOf(region(), {rule("data")});
    sessions->startBackgroundTaskExtensionTime(region(1, 2));
    EXPECT_EQ(tasks(), 0U);
    EXPECT_EQ(logged("Inside beacon region but did not record an enter event:CLBeaconRegion (identifier:'R', "
                     "uuid:B9407F30-F5F8-466E-AFF9-25556B57FE6D, major:1, minor:2)"),
              1);
}

TEST_F(VLBeaconRegionSessionsTest, EnterBeforeARestartCounts) {
    sessionOf(region(), {rule("data")});
    open(region(1, 2));
    sessions = makeSessions(beaconsConfig);
    sessions->startBackgroundTaskExtensionTime(region(1, 2));
    EXPECT_EQ(tasks(), 1U);
}

TEST_F(VLBeaconRegionSessionsTest, ExpiryAfterDestructionIsHarmless) {
    sessionOf(region(), {rule("data")});
    open(region(1, 2));
    sessions->startBackgroundTaskExtensionTime(region(1, 2));
    sessions.reset();
    phone().application()->expireBackgroundTasks();
    EXPECT_EQ(tasks(), 0U);
    EXPECT_EQ(logged("expired background task."), 0);
}

}  // namespace

}  // namespace vorlane

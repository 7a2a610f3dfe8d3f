#include "Beacons/VLBeaconContentData.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "Tests/Beacons/BeaconTest.h"

namespace vorlane {

namespace {

constexpr const char* kText =
    "CLBeacon (uuid:B9407F30-F5F8-466E-AFF9-25556B57FE6D, major:1, minor:2, proximity:2, "
    "accuracy:1.50)";

class VLBeaconContentDataTest : public BeaconTest {
protected:
    std::shared_ptr<VLBeaconsSettings> store = std::make_shared<VLBeaconsSettings>();

    VLBeaconContentData dataOf(const CLBeacon& ranged = beacon()) {
        store->setBeacon(ranged);
        return VLBeaconContentData(store);
    }
    VLBeaconContentData limited(std::int64_t count, double period) {
        store->setMessageCountRuleId("C");
        store->setPeriodStartRuleId("P");
        auto data = dataOf();
        data.setMaximumMessageCount(count);
        data.setMaximumMessageTimePeriod(period);
        return data;
    }
    bool isWithin(const std::string& range, CLProximity proximity) {
        auto data = dataOf(beacon(2, proximity));
        data.setAlertRange(range);
        return data.withinRange();
    }
    std::int64_t coolOffOf(const Value& minutes) {
        store->setServerConfig({{"cooloff_period_minutes", minutes}});
        return dataOf().coolOffPeriod();
    }
};

TEST_F(VLBeaconContentDataTest, AlertRangesIncludeTheirProximities) {
    using enum CLProximity;
    for (const auto proximity : {Unknown, Immediate, Near, Far, static_cast<CLProximity>(9)}) {
        EXPECT_TRUE(isWithin("any", proximity));
        EXPECT_EQ(isWithin("immediate", proximity), proximity == Immediate);
        EXPECT_EQ(isWithin("near", proximity), proximity == Immediate || proximity == Near);
        EXPECT_FALSE(isWithin("far", proximity));
        EXPECT_FALSE(isWithin("", proximity));
        EXPECT_FALSE(isWithin("Any", proximity));
        EXPECT_FALSE(dataOf(beacon(2, proximity)).withinRange());
    }
}

TEST_F(VLBeaconContentDataTest, CoolOffPeriodIsConfiguredInMinutes) {
    EXPECT_EQ(dataOf().coolOffPeriod(), 0);
    EXPECT_EQ(coolOffOf(10), 600);
    EXPECT_EQ(coolOffOf("10"), 600);
    EXPECT_EQ(coolOffOf(1.9), 60);
    EXPECT_EQ(coolOffOf(-2), -120);
    EXPECT_EQ(coolOffOf(1e300), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(coolOffOf(-1e300), std::numeric_limits<std::int64_t>::min());
    for (const Value& wrong : {Value(nullptr), Value("ten"), Value(true), Value(Array{10}), Value(Dictionary{})}) {
        EXPECT_EQ(coolOffOf(wrong), 0) << wrong;
    }
}

TEST_F(VLBeaconContentDataTest, CoolOffLastsUntilThePeriodIsOver) {
    store->setServerConfig({{"cooloff_period_minutes", 10}});
    auto data = dataOf();
    EXPECT_FALSE(data.isInCoolOff());
    data.enableCoolOff();
    EXPECT_EQ(settingsFile()["VL_COOLDOWN_TIME_KEY"][std::string(kUUID) + "_1_2"], Value(phone().now()));
    EXPECT_TRUE(data.isInCoolOff());
    phone().advance(599.5);
    EXPECT_TRUE(data.isInCoolOff());
    phone().advance(0.5);
    EXPECT_TRUE(data.isInCoolOff());
    EXPECT_EQ(logged(std::string("Beacon in cooloff mode: ") + kText), 3);
    phone().advance(0.5);
    EXPECT_FALSE(data.isInCoolOff());
    EXPECT_EQ(logged(std::string("Beacon in cooloff mode: ") + kText), 3);
}

TEST_F(VLBeaconContentDataTest, CoolOffWithoutAPeriodLastsAnInstant) {
    auto data = dataOf();
    data.enableCoolOff();
    EXPECT_TRUE(data.isInCoolOff());
    phone().advance(0.001);
    EXPECT_FALSE(data.isInCoolOff());
}

TEST_F(VLBeaconContentDataTest, CoolOffBelongsToItsBeaconAndSurvivesARestart) {
    store->setServerConfig({{"cooloff_period_minutes", 10}});
    dataOf(beacon(2)).enableCoolOff();
    EXPECT_FALSE(dataOf(beacon(3)).isInCoolOff());
    phone().advance(600);
    store = std::make_shared<VLBeaconsSettings>();
    EXPECT_TRUE(dataOf(beacon(2)).isInCoolOff());
    phone().advance(1);
    EXPECT_FALSE(dataOf(beacon(2)).isInCoolOff());
}

TEST_F(VLBeaconContentDataTest, FirstCheckStartsAPeriod) {
    auto data = limited(2, 3600);
    EXPECT_FALSE(data.isMessageLimitReached());
    EXPECT_EQ(settingsFile()["VL_BEACON_RULES_KEY"],
              Value(Dictionary{{"P", Dictionary{{"VL_PERIOD_START", phone().now()}}},
                               {"C", Dictionary{{"VL_MESSAGE_DISPLAY_COUNT", 0}}}}));
}

TEST_F(VLBeaconContentDataTest, PeriodAdmitsOneMessageMoreThanTheMaximum) {
    auto data = limited(2, 3600);
    for (int shown = 0; shown < 3; ++shown) {
        EXPECT_FALSE(data.isMessageLimitReached()) << shown;
        data.incrementMessageCount();
    }
    EXPECT_EQ(loggedPart("Maximum message count"), 0);
    EXPECT_TRUE(data.isMessageLimitReached());
    EXPECT_EQ(logged(std::string("Maximum message count reached for rule: C, beacon: ") + kText), 1);
    EXPECT_EQ(settingsFile()["VL_BEACON_RULES_KEY"]["C"]["VL_MESSAGE_DISPLAY_COUNT"], Value(3));
}

TEST_F(VLBeaconContentDataTest, LimitAppliesUntilThePeriodIsOver) {
    auto data = limited(0, 3600);
    EXPECT_FALSE(data.isMessageLimitReached());
    data.incrementMessageCount();
    store = std::make_shared<VLBeaconsSettings>();
    auto again = limited(0, 3600);
    EXPECT_TRUE(again.isMessageLimitReached());
    phone().advance(3599.5);
    EXPECT_TRUE(again.isMessageLimitReached());
    phone().advance(0.5);
    EXPECT_FALSE(again.isMessageLimitReached());
    EXPECT_EQ(store->periodStart(), phone().now());
    EXPECT_EQ(store->messageDisplayCount(), 0);
}

TEST_F(VLBeaconContentDataTest, EveryCheckStartsAPeriodOfNoLength) {
    auto data = limited(0, 0);
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(data.isMessageLimitReached());
        data.incrementMessageCount();
    }
}

TEST_F(VLBeaconContentDataTest, NoRuleMeansNoLimit) {
    auto data = dataOf();
    data.setMaximumMessageTimePeriod(3600);
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(data.isMessageLimitReached());
        data.incrementMessageCount();
    }
    EXPECT_TRUE(settingsFile().is_null());
}

TEST_F(VLBeaconContentDataTest, NegativeMaximumAdmitsNoMessage) {
    auto data = limited(-1, 3600);
    EXPECT_TRUE(data.isMessageLimitReached());
}

TEST_F(VLBeaconContentDataTest, CountStopsAtTheLargestInteger) {
    auto data = limited(2, 3600);
    store->setMessageDisplayCount(std::numeric_limits<std::int64_t>::max());
    data.incrementMessageCount();
    EXPECT_EQ(store->messageDisplayCount(), std::numeric_limits<std::int64_t>::max());
}

TEST_F(VLBeaconContentDataTest, CountsBelongToTheCurrentRules) {
    auto data = limited(0, 3600);
    EXPECT_FALSE(data.isMessageLimitReached());
    store->setMessageCountRuleId("another");
    data.incrementMessageCount();
    EXPECT_EQ(settingsFile()["VL_BEACON_RULES_KEY"]["C"]["VL_MESSAGE_DISPLAY_COUNT"], Value(0));
    EXPECT_EQ(settingsFile()["VL_BEACON_RULES_KEY"]["another"]["VL_MESSAGE_DISPLAY_COUNT"], Value(1));
}

}  // namespace

}  // namespace vorlane

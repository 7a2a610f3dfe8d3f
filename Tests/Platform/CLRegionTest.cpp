#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Platform/CLBeaconRegion.h"
#include "Platform/CLCircularRegion.h"

namespace vorlane {

namespace {

const std::string kRegionUUID = "B9407F30-F5F8-466E-AFF9-25556B57FE6D";

Dictionary circle() {
    return {{"type", "circular"}, {"identifier", "7"}, {"latitude", 59.9}, {"longitude", 10.75}, {"radius", 100.0}};
}

Dictionary beacons() { return {{"type", "beacon"}, {"identifier", "shop"}, {"uuid", kRegionUUID}}; }

Dictionary changed(Dictionary dictionary, const std::string& key, const Value& value) {
    dictionary[key] = value;
    return dictionary;
}

Dictionary without(Dictionary dictionary, const std::string& key) {
    dictionary.erase(key);
    return dictionary;
}

TEST(CLRegionTest, CircleSurvivesARoundTrip) {
    const auto region = std::dynamic_pointer_cast<CLCircularRegion>(CLRegion::fromDictionary(circle()));
    ASSERT_TRUE(region);
    EXPECT_EQ(region->identifier(), "7");
    EXPECT_EQ(region->center(), (CLLocationCoordinate2D{59.9, 10.75}));
    EXPECT_EQ(region->radius(), 100.0);
    EXPECT_EQ(region->toDictionary(), circle());
    EXPECT_EQ(region->description(),
              "CLCircularRegion (identifier:'7', center:<+59.90000000,+10.75000000>, radius:100.00m)");
}

TEST(CLRegionTest, BeaconRegionSurvivesARoundTrip) {
    auto narrow = changed(changed(beacons(), "major", 0), "minor", 65535);
    narrow["notifyEntryStateOnDisplay"] = true;
    const auto region = std::dynamic_pointer_cast<CLBeaconRegion>(CLRegion::fromDictionary(narrow));
    ASSERT_TRUE(region);
    EXPECT_EQ(region->proximityUUID(), kRegionUUID);
    EXPECT_EQ(region->major(), 0);
    EXPECT_EQ(region->minor(), 65535);
    EXPECT_TRUE(region->notifyEntryStateOnDisplay());
    EXPECT_EQ(region->toDictionary(), narrow);
    EXPECT_EQ(region->description(),
              "CLBeaconRegion (identifier:'shop', uuid:" + kRegionUUID + ", major:0, minor:65535)");
}

TEST(CLRegionTest, BeaconRegionDescribesAnyMajorAndMinor) {
    const auto region = std::dynamic_pointer_cast<CLBeaconRegion>(CLRegion::fromDictionary(beacons()));
    ASSERT_TRUE(region);
    EXPECT_EQ(region->major(), std::nullopt);
    EXPECT_EQ(region->minor(), std::nullopt);
    EXPECT_FALSE(region->notifyEntryStateOnDisplay());
    EXPECT_EQ(region->toDictionary(), beacons());
    EXPECT_EQ(region->description(),
              "CLBeaconRegion (identifier:'shop', uuid:" + kRegionUUID + ", major:(null), minor:(null))");
}

TEST(CLRegionTest, UUIDIsStoredInCapitals) {
    auto small = kRegionUUID;
    for (auto& letter : small) letter = static_cast<char>(std::tolower(letter));
    const auto region = CLRegion::fromDictionary(changed(beacons(), "uuid", small));
    ASSERT_TRUE(region);
    EXPECT_EQ(region->toDictionary(), beacons());
}

TEST(CLRegionTest, MissingOrMistypedFieldIsRefused) {
    for (const auto* key : {"type", "identifier", "latitude", "longitude", "radius"}) {
        EXPECT_FALSE(CLRegion::fromDictionary(without(circle(), key))) << key;
        for (const auto& value : {Value(), Value(true), Value(Array{}), Value(Dictionary{})}) {
            EXPECT_FALSE(CLRegion::fromDictionary(changed(circle(), key, value))) << key << value;
        }
    }
    for (const auto* key : {"type", "identifier", "uuid"}) {
        EXPECT_FALSE(CLRegion::fromDictionary(without(beacons(), key))) << key;
        EXPECT_FALSE(CLRegion::fromDictionary(changed(beacons(), key, 5))) << key;
    }
    EXPECT_FALSE(CLRegion::fromDictionary(changed(circle(), "type", "square")));
    EXPECT_FALSE(CLRegion::fromDictionary({}));
}

TEST(CLRegionTest, InvalidCircleIsRefused) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (const double latitude : {90.0, -90.0}) {
        EXPECT_TRUE(CLRegion::fromDictionary(changed(circle(), "latitude", latitude)));
        EXPECT_FALSE(CLRegion::fromDictionary(changed(circle(), "latitude", std::nextafter(latitude, 2 * latitude))));
    }
    for (const double longitude : {180.0, -180.0}) {
        EXPECT_TRUE(CLRegion::fromDictionary(changed(circle(), "longitude", longitude)));
        EXPECT_FALSE(
            CLRegion::fromDictionary(changed(circle(), "longitude", std::nextafter(longitude, 2 * longitude))));
    }
    for (const double radius : {0.0, -1.0, kNaN, kInfinity}) {
        EXPECT_FALSE(CLRegion::fromDictionary(changed(circle(), "radius", radius))) << radius;
    }
    for (const auto* key : {"latitude", "longitude"}) {
        EXPECT_FALSE(CLRegion::fromDictionary(changed(circle(), key, kNaN)));
        EXPECT_FALSE(CLRegion::fromDictionary(changed(circle(), key, -kInfinity)));
    }
}

TEST(CLRegionTest, InvalidMajorOrMinorIsRefused) {
    for (const auto* key : {"major", "minor"}) {
        for (const auto& value : {Value(-1), Value(65536), Value(1.5), Value("1"), Value()}) {
            EXPECT_FALSE(CLRegion::fromDictionary(changed(beacons(), key, value))) << key << value;
        }
    }
    for (const auto& uuid : {std::string(), kRegionUUID.substr(1), kRegionUUID + "0", std::string("no uuid"),
                             std::string(kRegionUUID) + '\0'}) {
        EXPECT_FALSE(CLRegion::fromDictionary(changed(beacons(), "uuid", uuid))) << uuid;
    }
}

}  // namespace

}  // namespace vorlane

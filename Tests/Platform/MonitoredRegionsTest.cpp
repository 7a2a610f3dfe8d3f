#include "Platform/MonitoredRegions.h"

#include <gtest/gtest.h>

#include <fstream>

#include "Platform/CLBeaconRegion.h"
#include "Platform/CLCircularRegion.h"
#include "Platform/Internal/PropertyListFile.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Tests/Platform/FailingSystemCalls.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

namespace {

class MonitoredRegionsTest : public TemporaryFolderTest {
protected:
    static std::shared_ptr<CLRegion> circle(const std::string& identifier, double radius = 100) {
        return std::make_shared<CLCircularRegion>(CLLocationCoordinate2D{59.9, 10.7}, radius, identifier);
    }
    static std::vector<Value> listed(const MonitoredRegions& regions) {
        std::vector<Value> list;
        for (const auto& region : regions.all()) list.emplace_back(region->toDictionary());
        return list;
    }

    const std::string file = path("regions.plist");
};

TEST_F(MonitoredRegionsTest, NewStoreIsEmptyAndWritesNothing) {
    const MonitoredRegions regions(file);
    EXPECT_TRUE(regions.all().empty());
    EXPECT_TRUE(names().empty());
}

TEST_F(MonitoredRegionsTest, ChangesAreReadBackAfterARestart) {
    const auto shop = std::make_shared<CLBeaconRegion>("B9407F30-F5F8-466E-AFF9-25556B57FE6D", "shop", 1, 2);
    shop->setNotifyEntryStateOnDisplay(true);
    std::vector<Value> before;
    {
        MonitoredRegions regions(file);
        regions.add(circle("2"));
        regions.add(circle("1"));
        regions.add(shop);
        EXPECT_TRUE(regions.remove("2"));
        before = listed(regions);
        EXPECT_EQ(before.size(), 2U);
    }
    MonitoredRegions again(file);
    EXPECT_EQ(listed(again), before);
    ASSERT_TRUE(again.find("shop"));
    EXPECT_EQ(again.find("shop")->toDictionary(), shop->toDictionary());
    EXPECT_FALSE(again.find("2"));
    EXPECT_TRUE(again.remove("1"));
    EXPECT_TRUE(again.remove("shop"));
    EXPECT_TRUE(MonitoredRegions(file).all().empty());
}

TEST_F(MonitoredRegionsTest, RegionReplacesTheOneWithItsIdentifier) {
    MonitoredRegions regions(file);
    regions.add(circle("1", 100));
    const auto larger = circle("1", 200);
    regions.add(larger);
    EXPECT_EQ(regions.find("1"), larger);
    EXPECT_EQ(listed(MonitoredRegions(file)), std::vector<Value>{Value(larger->toDictionary())});
}

TEST_F(MonitoredRegionsTest, UnknownRegionCannotBeRemoved) {
    MonitoredRegions regions(file);
    EXPECT_FALSE(regions.remove("1"));
    EXPECT_TRUE(names().empty());
}

TEST_F(MonitoredRegionsTest, OtherValuesInTheFileAreSkipped) {
    NSPropertyListSerialization::writeToFile(
        {{"regions", Array{5, "text", Array{}, Dictionary{}, Dictionary{{"type", "circular"}, {"identifier", "1"}},
                           circle("2")->toDictionary()}}},
        file);
    EXPECT_EQ(listed(MonitoredRegions(file)), std::vector<Value>{Value(circle("2")->toDictionary())});
    NSPropertyListSerialization::writeToFile({{"regions", 5}}, file);
    EXPECT_TRUE(MonitoredRegions(file).all().empty());
    NSPropertyListSerialization::writeToFile({}, file);
    EXPECT_TRUE(MonitoredRegions(file).all().empty());
}

TEST_F(MonitoredRegionsTest, DamagedFileIsKeptAside) {
    std::ofstream(file) << "garbage";
    MonitoredRegions regions(file);
    EXPECT_TRUE(regions.all().empty());
    regions.add(circle("1"));
    EXPECT_EQ(MonitoredRegions(file).all().size(), 1U);
    std::string kept;
    std::ifstream(file + ".corrupt") >> kept;
    EXPECT_EQ(kept, "garbage");
}

TEST_F(MonitoredRegionsTest, UnreadableFileJoinsWhatWasAddedMeanwhile) {
    MonitoredRegions(file).add(circle("1"));
    MonitoredRegions(file).add(circle("2", 100));
    std::unique_ptr<MonitoredRegions> regions;
    {
        FailingSystemCalls calls;
        calls.failReads();
        regions = std::make_unique<MonitoredRegions>(file);
        regions->add(circle("2", 200));
        EXPECT_EQ(regions->all().size(), 1U);
    }
    regions->add(circle("3"));
    EXPECT_EQ(listed(*regions), (std::vector<Value>{circle("1")->toDictionary(), circle("2", 200)->toDictionary(),
                                                    circle("3")->toDictionary()}));
    EXPECT_EQ(listed(MonitoredRegions(file)), listed(*regions));
}

TEST_F(MonitoredRegionsTest, OneStepWritesOnce) {
    MonitoredRegions regions(file);
    {
        const PropertyListFile::Step step;
        regions.add(circle("1"));
        regions.add(circle("2"));
        EXPECT_TRUE(names().empty());
    }
    EXPECT_EQ(MonitoredRegions(file).all().size(), 2U);
}

TEST_F(MonitoredRegionsTest, WithoutAFileRegionsStayInMemory) {
    MonitoredRegions regions("");
    regions.add(circle("1"));
    EXPECT_EQ(regions.all().size(), 1U);
    EXPECT_TRUE(names().empty());
    MonitoredRegions unwritable(path("missing/../missing.txt/") + std::string(300, 'x'));
    unwritable.add(circle("1"));
    EXPECT_EQ(unwritable.all().size(), 1U);
}

}  // namespace

}  // namespace vorlane

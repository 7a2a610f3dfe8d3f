#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>

#include "Tests/Geo/GeoTest.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane {

namespace {

using Identifiers = std::vector<std::string>;

/// Decides which regions are monitored and recorded.
class VLGeoServiceMonitoringTest : public GeoTest {
protected:
    /// Whether a description is accepted.
    static bool isTaken(const Dictionary& description) {
        return !VLGeoService::extractGeoRegionsFromJson({{"geo_regions", Array{description}}}).empty();
    }
    static Dictionary changed(const std::string& key, const Value& value) {
        auto description = described("1");
        description[key] = value;
        return description;
    }
    std::shared_ptr<CLBeaconRegion> beacons(const std::string& identifier) {
        return std::make_shared<CLBeaconRegion>("B9407F30-F5F8-466E-AFF9-25556B57FE6D", identifier);
    }
    /// The identifiers of all regions started since the start of the test.
    Identifiers started() const { return started_; }

    VLGeoServiceMonitoringTest() {
        phone().simulatedApplication().setEventObserver([this](const std::string& event, const Dictionary& fields) {
            if (event != "monitoring" || fields.at("action") != Value("start")) return;
            started_.push_back(fields.at("region")["identifier"].get<std::string>());
        });
    }

private:
    Identifiers started_;
};

TEST_F(VLGeoServiceMonitoringTest, MonitorsAndStoresTheListInItsOrder) {
    fetch({described("b", 1, 2, 3), described("a")});
    EXPECT_EQ(monitoredIdentifiers(), (Identifiers{"a", "b"}));
    EXPECT_EQ(started(), (Identifiers{"b", "a"}));
    auto first = freshRecord("b");
    first["latitude"] = 1.0;
    first["longitude"] = 2.0;
    first["radius"] = 3.0;
    EXPECT_EQ(file(), Value(Array{first, freshRecord("a")}));
    EXPECT_EQ(manager().monitoredRegion("b")->toDictionary(),
              (Dictionary{
                  {"type", "circular"}, {"identifier", "b"}, {"latitude", 1.0}, {"longitude", 2.0}, {"radius", 3.0}}));
    EXPECT_EQ(logged("Currently monitoring 0 beacon regions"), 1);
    EXPECT_EQ(logged("Set to clear 0 of 0 geo regions"), 1);
}

TEST_F(VLGeoServiceMonitoringTest, MonitorsTheFirst20Of25Regions) {
    fetch(describedRegions(25));
    EXPECT_EQ(manager().monitoredRegions().size(), 20U);
    EXPECT_TRUE(manager().monitoredRegion("20"));
    EXPECT_FALSE(manager().monitoredRegion("21"));
    EXPECT_EQ(file().size(), 20U);
    EXPECT_EQ(file()[19], freshRecord("20"));
    EXPECT_EQ(geo->geoRegionsFromAPI().size(), 25U);
    EXPECT_EQ(logged("Could not add 5 regions for monitoring due to all 20 slots being in use"), 1);
}

TEST_F(VLGeoServiceMonitoringTest, Monitors20Regions) {
    fetch(describedRegions(20));
    EXPECT_EQ(manager().monitoredRegions().size(), 20U);
    EXPECT_TRUE(log().linesContaining("Could not add").empty());
    fetch(describedRegions(21));
    EXPECT_EQ(logged("Could not add 1 regions for monitoring due to all 20 slots being in use"), 1);
}

TEST_F(VLGeoServiceMonitoringTest, BeaconRegionsStayAndTakeNoSlot) {
    for (const auto* identifier : {"x", "y", "1"}) manager().startMonitoringForRegion(beacons(identifier));
    manager().startMonitoringForRegion(std::make_shared<CLCircularRegion>(kOslo, 5, "stale"));
    std::vector<Dictionary> regions;
    for (int i = 0; i < 20; ++i) regions.push_back(described("r" + std::to_string(i)));
    fetch(regions);
    EXPECT_EQ(manager().monitoredRegions().size(), 23U);
    EXPECT_FALSE(manager().monitoredRegion("stale"));
    EXPECT_TRUE(std::dynamic_pointer_cast<CLBeaconRegion>(manager().monitoredRegion("1")));
    EXPECT_EQ(logged("Currently monitoring 3 beacon regions"), 1);
    EXPECT_EQ(logged("Set to clear 1 of 1 geo regions"), 1);
    EXPECT_TRUE(log().linesContaining("Could not add").empty());
}

TEST_F(VLGeoServiceMonitoringTest, RegionOfBothListsKeepsItsRecord) {
    fetch({described("1"), described("2")});
    const auto before = phone().now();
    enter("1");
    phone().advance(100);
    auto renamed = described("1");
    renamed["name"] = "another name";
    fetch({described("3"), renamed});
    EXPECT_EQ(started(), (Identifiers{"1", "2", "3"}));
    EXPECT_EQ(monitoredIdentifiers(), (Identifiers{"1", "3"}));
    auto kept = freshRecord("1");
    kept["in_region"] = true;
    kept["VLEnterRegionTimestamp"] = before;
    kept["VLExitRegionTimestamp"] = before - 86400;
    // All fields of the stored record win, including the name.
    EXPECT_EQ(file(), Value(Array{freshRecord("3"), kept}));
    EXPECT_EQ(logged("Continuing to monitor region: " + manager().monitoredRegion("1")->description()), 1);
    EXPECT_EQ(logged("Stopped monitoring region: CLCircularRegion (identifier:'2', "
                     "center:<+59.90000000,+10.70000000>, radius:100.00m)"),
              1);
    EXPECT_EQ(logged("Set to clear 1 of 2 geo regions"), 1);
}

TEST_F(VLGeoServiceMonitoringTest, RegionThatComesBackHasANewRecord) {
    fetch({described("1"), described("2")});
    enter("1");
    fetch({described("2")});
    fetch({described("1")});
    EXPECT_EQ(file(), Value(Array{freshRecord("1")}));
    EXPECT_EQ(started(), (Identifiers{"1", "2", "1"}));
}

TEST_F(VLGeoServiceMonitoringTest, EmptyAnswerChangesOnlyTheTime) {
    fetch(describedRegions(2));
    const auto before = file();
    for (const auto* answer : {R"({"geo_regions":[]})", "{}", R"({"geo_regions":{}})", R"({"geo_regions":"x"})",
                               R"({"geo_regions":[5,null,"text",[],{}]})"}) {
        phone().advance(10'000);
        geo->updateConfig(at(kOslo));
        session().answer(kRegionsPath, 200, answer);
        phone().settle();
        EXPECT_TRUE(geo->geoRegionsFromAPI().empty()) << answer;
        EXPECT_EQ(monitoredIdentifiers(), (Identifiers{"1", "2"})) << answer;
        EXPECT_EQ(file(), before) << answer;
        EXPECT_EQ(settings->fetchGeoRegionTimestamp(), phone().now()) << answer;
    }
}

TEST_F(VLGeoServiceMonitoringTest, NumericIdMatchesItsString) {
    fetch({described("17")});
    fetch({described(17)});
    EXPECT_EQ(started(), Identifiers{"17"});
    EXPECT_EQ(monitoredIdentifiers(), Identifiers{"17"});
    EXPECT_EQ(file()[0]["identifier"], Value("17"));
    fetch({described(-3), described(2.5)});
    EXPECT_EQ(monitoredIdentifiers(), (Identifiers{"-3", "2.5"}));
}

TEST_F(VLGeoServiceMonitoringTest, ClipsTheRadiusToTheMaximum) {
    manager().setCapabilities({.maximumRegionMonitoringDistance = 500});
    fetch({described("at", 1, 2, 500), described("above", 1, 2, 500.5), described("far", 1, 2, 1e9),
           described("below", 1, 2, 499.5)});
    const auto radius = [this](const char* identifier) {
        return manager().monitoredRegion(identifier)->toDictionary().at("radius");
    };
    EXPECT_EQ(radius("at"), Value(500.0));
    EXPECT_EQ(radius("above"), Value(500.0));
    EXPECT_EQ(radius("far"), Value(500.0));
    EXPECT_EQ(radius("below"), Value(499.5));
    EXPECT_EQ(file()[2]["radius"], Value(1e9));  // not clipped
}

TEST_F(VLGeoServiceMonitoringTest, ReadsNumbersAsStringsAndStringsAsNumbers) {
    auto odd = described("1");
    odd["latitude"] = "59.25";
    odd["longitude"] = "-10.5";
    odd["radius"] = "75";
    odd["name"] = 12;
    odd["plotwise_id"] = 99;
    fetch({odd});
    EXPECT_EQ(
        manager().monitoredRegion("1")->toDictionary(),
        (Dictionary{
            {"type", "circular"}, {"identifier", "1"}, {"latitude", 59.25}, {"longitude", -10.5}, {"radius", 75.0}}));
    enter("1");
    EXPECT_EQ(logged("************** ENTERED REGION  12 *****************"), 1);
    EXPECT_EQ(contentRequests(), (std::vector<std::pair<Value, Value>>{{99, "enter"}}));
}

TEST_F(VLGeoServiceMonitoringTest, SkipsUnusableDescriptions) {
    ASSERT_TRUE(isTaken(described("1")));
    for (const auto& value : {Value(), Value(true), Value(Array{1}), Value(Dictionary{}), Value("")}) {
        for (const auto* key : {"id", "latitude", "longitude", "radius"}) {
            EXPECT_FALSE(isTaken(changed(key, value))) << key << value;
        }
    }
    for (const auto* key : {"id", "latitude", "longitude", "radius"}) {
        auto description = described("1");
        description.erase(key);
        EXPECT_FALSE(isTaken(description)) << key;
    }
    for (const auto& [key, value] : std::vector<std::pair<std::string, Value>>{{"latitude", 90.001},
                                                                               {"latitude", -90.001},
                                                                               {"longitude", 180.001},
                                                                               {"longitude", -180.001},
                                                                               {"latitude", "nan"},
                                                                               {"longitude", "inf"},
                                                                               {"latitude", "59,9"},
                                                                               {"latitude", "+-5"},
                                                                               {"longitude", "0x10"},
                                                                               {"radius", 0},
                                                                               {"id", "a\001"},
                                                                               {"radius", -5},
                                                                               {"radius", "infinity"},
                                                                               {"radius", "100 metres"},
                                                                               {"radius", "1e999"}}) {
        EXPECT_FALSE(isTaken(changed(key, value))) << key << value;
    }
    for (const auto& [key, value] : std::vector<std::pair<std::string, Value>>{
             {"latitude", 90}, {"latitude", -90}, {"longitude", 180}, {"longitude", "-180"}, {"radius", 0.001}}) {
        EXPECT_TRUE(isTaken(changed(key, value))) << key << value;
    }
    fetch({changed("radius", 0), described("2"), changed("latitude", 91), described("3")});
    EXPECT_EQ(monitoredIdentifiers(), (Identifiers{"2", "3"}));
}

TEST_F(VLGeoServiceMonitoringTest, OtherKeysAreNotStored) {
    auto description = described("1");
    description["shape"] = Dictionary{{"points", Array{1, nullptr}}};
    EXPECT_EQ(VLGeoService::extractGeoRegionsFromJson({{"geo_regions", Array{description}}}),
              std::vector<Dictionary>{description});
    fetch({description});
    EXPECT_EQ(file(), Value(Array{freshRecord("1")}));
}

TEST_F(VLGeoServiceMonitoringTest, OmitsUnusableFieldsFromTheRecord) {
    auto bare = described("1");
    bare.erase("name");
    bare.erase("plotwise_id");
    auto odd = described("2");
    odd["name"] = nullptr;
    odd["plotwise_id"] = Array{1};
    fetch({bare, odd});
    auto first = freshRecord("1");
    auto second = freshRecord("2");
    for (auto* record : {&first, &second}) {
        record->erase("name");
        record->erase("plotwise_id");
    }
    EXPECT_EQ(file(), Value(Array{first, second}));
}

TEST_F(VLGeoServiceMonitoringTest, DuplicateRegionIsStoredTwice) {
    fetch({described("1"), described("1")});
    EXPECT_EQ(file(), Value(Array{freshRecord("1"), freshRecord("1")}));
    EXPECT_EQ(monitoredIdentifiers(), Identifiers{"1"});
}

TEST_F(VLGeoServiceMonitoringTest, MalformedFileIsReplaced) {
    const std::string garbage = "garbage";
    NSFileManager::writeToFile(Data(garbage.begin(), garbage.end()), documentsPath("VLGeoRegions.plist"));
    enter("1");
    fetch({described("1")});
    EXPECT_EQ(file(), Value(Array{freshRecord("1")}));
}

TEST_F(VLGeoServiceMonitoringTest, RegionsAndRecordsSurviveARestart) {
    fetch({described("1"), described("2")});
    SimulatedPhone next({.documentsFolder = phone().documentsFolder()});
    EXPECT_EQ(next.simulatedLocationManager().monitoredRegions().size(), 2U);
    geo = makeService();
    fetch({described("2"), described("3")});
    EXPECT_EQ(started(), (Identifiers{"1", "2", "3"}));
    EXPECT_EQ(file(), Value(Array{freshRecord("2"), freshRecord("3")}));
}

TEST_F(VLGeoServiceMonitoringTest, RegionWithoutARecordIsStartedAgain) {
    fetch({described("1")});
    std::filesystem::remove(VLGeoRegionFile::path());
    geo = makeService();
    fetch({described("1")});
    EXPECT_EQ(started(), (Identifiers{"1", "1"}));
    EXPECT_EQ(monitoredIdentifiers(), Identifiers{"1"});
    EXPECT_EQ(file(), Value(Array{freshRecord("1")}));
}

TEST_F(VLGeoServiceMonitoringTest, Has20SlotsAndOneKey) {
    EXPECT_EQ(VLGeoService::maxGeoRegionMonitoringSlots(), 20U);
    EXPECT_STREQ(VLGeoService::geoRegionsConfigKey(), "geo_regions");
    EXPECT_EQ(geo->stopMonitoringStaleGeoRegions({}), 20U);
}

TEST_F(VLGeoServiceMonitoringTest, RegionThatIsNotMonitoredIsStartedAgain) {
    fetch({described("1"), described("2")});
    enter("1");
    for (const auto& region : manager().monitoredRegions()) manager().stopMonitoringForRegion(region);
    geo = makeService();
    fetch({described("1"), described("2")});
    EXPECT_EQ(monitoredIdentifiers(), (Identifiers{"1", "2"}));
    EXPECT_EQ(started(), (Identifiers{"1", "2", "1", "2"}));
    EXPECT_EQ(file()[0]["in_region"], Value(true));
}

TEST_F(VLGeoServiceMonitoringTest, BeaconRegionDoesNotCountAsTheMonitoredGeofence) {
    restartWithFile(Array{freshRecord("1")});
    manager().startMonitoringForRegion(beacons("1"));
    fetch({described("1")});
    EXPECT_TRUE(std::dynamic_pointer_cast<CLCircularRegion>(manager().monitoredRegion("1")));
}

TEST_F(VLGeoServiceMonitoringTest, FilesAreWrittenAfterAllRegionsHaveChanged) {
    fetch({described("1"), described("2")});
    const auto before = file();
    std::vector<Value> duringTheFetch;
    phone().simulatedApplication().setEventObserver([&](const std::string& event, const Dictionary&) {
        if (event == "monitoring") duringTheFetch.push_back(file());
    });
    fetch({described("3"), described("4")});
    phone().simulatedApplication().setEventObserver(nullptr);
    EXPECT_EQ(duringTheFetch, std::vector<Value>(4, before));
    EXPECT_EQ(file(), Value(Array{freshRecord("3"), freshRecord("4")}));
}

TEST_F(VLGeoServiceMonitoringTest, KillBetweenTheWritesLosesNoRegion) {
    using std::filesystem::copy_options;
    const TemporaryFolder before;
    const auto& after = phone().documentsFolder();
    fetch({described("1"), described("2"), described("3")});
    std::filesystem::copy(after, before.path(), copy_options::recursive);
    const auto newer = {described("2"), described("4"), described("5")};
    fetch(newer);
    const std::vector<std::string> files{"VLMonitoredRegions.plist", "VLGeoRegions.plist", "VLLibSettings.plist"};
    for (std::size_t written = 0; written <= files.size(); ++written) {
        const TemporaryFolder folder;
        std::filesystem::copy(before.path(), folder.path(), copy_options::recursive);
        for (std::size_t i = 0; i < written; ++i) {
            std::filesystem::copy_file(after + "/" + files[i], folder.path(files[i]), copy_options::overwrite_existing);
        }
        const auto next = std::make_shared<SimulatedPhone>(SimulatedPhone::Options{.documentsFolder = folder.path()});
        Platform::install(next);
        VLGeoService service(next->locationManager(), settings, content, urlBuilder, urlSession);
        service.handleGeoRegionsFetch(at(kOslo), Dictionary{{"geo_regions", Array(newer.begin(), newer.end())}}, false);
        EXPECT_EQ(next->locationManager()->monitoredRegions().size(), 3U) << written;
        EXPECT_EQ(VLGeoRegionFile().getRegionsFromFile().value_or(VLGeoRegionFile::Records()).size(), 3U) << written;
    }
}

TEST_F(VLGeoServiceMonitoringTest, KnownRegionBeyondThe20thHasNoRecord) {
    fetch({described("25")});
    fetch(describedRegions(25));
    EXPECT_EQ(manager().monitoredRegions().size(), 21U);
    EXPECT_EQ(file().size(), 20U);
    enter("25");
    EXPECT_TRUE(contentRequests().empty());
    fetch({described("25")});
    EXPECT_EQ(started().back(), "25");
    EXPECT_EQ(file(), Value(Array{freshRecord("25")}));
}

TEST_F(VLGeoServiceMonitoringTest, CrossingsWorkFromMemoryAfterAFailedWrite) {
    const auto path = documentsPath("VLGeoRegions.plist");
    fetch({described("1")});
    std::filesystem::remove(path);
    std::filesystem::create_directories(path + "/in the way");
    fetch({described("2")});
    enter("2");
    enter("2");
    EXPECT_EQ(contentRequests(), (std::vector<std::pair<Value, Value>>{{"segment of 2", "enter"}}));
    fetch({described("2")});
    EXPECT_EQ(started(), (Identifiers{"1", "2"}));
    EXPECT_TRUE(std::filesystem::is_directory(path));
    std::filesystem::remove_all(path);
    exit("2");
    ASSERT_EQ(file().size(), 1U);
    EXPECT_EQ(file()[0]["VLEnterRegionTimestamp"], Value(phone().now()));
}

TEST_F(VLGeoServiceMonitoringTest, UnreadableFileIsMergedOnceItCanBeRead) {
    const auto path = documentsPath("VLGeoRegions.plist");
    NSFileManager::writeToFile({}, path);
    std::filesystem::resize_file(path, std::uintmax_t{65} << 20U);  // too large to be read
    fetch({described("1"), described("2")});
    enter("1");
    EXPECT_EQ(contentRequests().size(), 1U);
    EXPECT_EQ(std::filesystem::file_size(path), std::uintmax_t{65} << 20U);
    auto stored = freshRecord("2");
    stored["VLEnterRegionTimestamp"] = phone().now() - 10;
    NSFileManager::writeToFile(NSPropertyListSerialization::dataWithPropertyList(Array{stored, freshRecord("9")}),
                               path);
    exit("1");
    ASSERT_EQ(file().size(), 2U);
    EXPECT_EQ(file()[0]["VLEnterRegionTimestamp"], Value(phone().now()));
    EXPECT_EQ(file()[0]["VLExitRegionTimestamp"], Value(phone().now()));
    EXPECT_EQ(file()[1]["VLEnterRegionTimestamp"], Value(phone().now() - 10));
}

}  // namespace

}  // namespace vorlane

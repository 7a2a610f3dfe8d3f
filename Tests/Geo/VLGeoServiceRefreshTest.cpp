#include <gtest/gtest.h>

#include <limits>

#include "Tests/Geo/GeoTest.h"

namespace vorlane {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Decides when regions are fetched.
class VLGeoServiceRefreshTest : public GeoTest {
protected:
    /// Sets the last fetch to Oslo, this number of seconds ago.
    void fetchedBefore(double seconds) {
        settings->setOldLocation(Dictionary{{"Latitude", kOslo.latitude}, {"Longitude", kOslo.longitude}});
        settings->setFetchGeoRegionTimestamp(phone().now() - seconds);
    }
    /// A second or a metre less this meets no threshold by rounding.
    static constexpr double kLittle = 0.001;
};

TEST_F(VLGeoServiceRefreshTest, FirstUsableLocationAlwaysFetches) {
    settings->setSignificantDistance(1e9);
    settings->setSignificantTime(1e9);
    geo->didUpdateLocations({at(kOslo)});
    ASSERT_EQ(fetches(), 1U);
    const auto request = session().lastRequest().request;
    EXPECT_EQ(request.HTTPMethod, "GET");
    EXPECT_TRUE(request.URL.absoluteString().ends_with("/K/T/geo/regions?latitude=59.91&longitude=10.75&max=20"))
        << request.URL.absoluteString();
    EXPECT_EQ(logged("************** FETCH GEO REGIONS - 1 *****************"), 1);
    EXPECT_EQ(logged("SIGNIFICANT DISTANCE 1000000000.000000"), 1);  // the threshold
    EXPECT_EQ(logged("SIGNIGICANT TIME 1700000000.000000"), 1);
    EXPECT_EQ(logged("FETCH GEO REGIONS NOT CALLED"), 0);
}

TEST_F(VLGeoServiceRefreshTest, FetchesNothingBelowBothThresholds) {
    fetchedBefore(3599);
    geo->didUpdateLocations({at(northOfOslo(999))});
    EXPECT_EQ(fetches(), 0U);
    EXPECT_EQ(logged("FETCH GEO REGIONS NOT CALLED"), 1);
    EXPECT_EQ(logged("SIGNIGICANT TIME 3599.000000"), 1);
    EXPECT_EQ(logged("SIGNIFICANT DISTANCE 999.000000"), 1);
}

TEST_F(VLGeoServiceRefreshTest, FetchesAtTheDistanceThreshold) {
    const auto place = northOfOslo(1234);
    const double metres = VLGeoService::calculateDistanceInMetersBetweenCoord(place, kOslo);
    for (const auto& [threshold, expected] :
         {std::pair(std::nextafter(metres, kInfinity), 0U), std::pair(metres, 1U)}) {
        fetchedBefore(0);
        settings->setSignificantDistance(threshold);
        geo->updateConfig(at(place));
        EXPECT_EQ(fetches(), expected) << threshold;
    }
}

TEST_F(VLGeoServiceRefreshTest, DistanceAloneFetchesWhateverTheTimeThreshold) {
    settings->setSignificantTime(1e10);  // above the clock
    settings->setOldLocation(Dictionary{{"Latitude", kOslo.latitude}, {"Longitude", kOslo.longitude}});
    geo->updateConfig(at(northOfOslo(999)));
    EXPECT_EQ(fetches(), 0U);
    geo->updateConfig(at(northOfOslo(1001)));
    EXPECT_EQ(fetches(), 1U);
}

TEST_F(VLGeoServiceRefreshTest, FetchesNothingWithoutSettings) {
    settings->setForceGeoConfigUpdate(true);
    geo = std::make_shared<VLGeoService>(phone().locationManager(), std::weak_ptr<VLSettings>(), content, urlBuilder,
                                         urlSession);
    geo->startWithConfig(loadedConfig(R"({"configs":{"geo_regions":{"significant_distance_m":5,)"
                                      R"("desired_horizontal_accuracy":5}}})"));
    geo->didUpdateLocations({at(kOslo)});
    EXPECT_EQ(fetches(), 0U);
    geo->handleGeoRegionsFetch(at(kOslo), Dictionary{{"geo_regions", Array{described("1")}}}, false);
    EXPECT_EQ(monitoredIdentifiers(), std::vector<std::string>{"1"});
    enter("1");
    EXPECT_EQ(contentRequests().size(), 1U);
}

TEST_F(VLGeoServiceRefreshTest, DefaultDistanceIs1000Metres) {
    fetchedBefore(0);
    geo->updateConfig(at(northOfOslo(1000 - kLittle)));
    EXPECT_EQ(fetches(), 0U);
    geo->updateConfig(at(northOfOslo(1000 + kLittle)));
    EXPECT_EQ(fetches(), 1U);
}

TEST_F(VLGeoServiceRefreshTest, FetchesAtTheTimeThreshold) {
    settings->setSignificantTime(60);
    fetchedBefore(59.75);
    geo->updateConfig(at(kOslo));
    EXPECT_EQ(fetches(), 0U);
    fetchedBefore(60);
    geo->updateConfig(at(kOslo));
    EXPECT_EQ(fetches(), 1U);
}

TEST_F(VLGeoServiceRefreshTest, DefaultTimeIs1Hour) {
    fetchedBefore(3599.75);
    geo->updateConfig(at(kOslo));
    EXPECT_EQ(fetches(), 0U);
    fetchedBefore(3600);
    geo->updateConfig(at(kOslo));
    EXPECT_EQ(fetches(), 1U);
}

TEST_F(VLGeoServiceRefreshTest, ForceAppliesOnce) {
    fetchedBefore(0);
    settings->setForceGeoConfigUpdate(true);
    geo->updateConfig(at(kOslo));
    EXPECT_EQ(fetches(), 1U);
    EXPECT_FALSE(settings->forceGeoConfigUpdate());
}

TEST_F(VLGeoServiceRefreshTest, FetchInProgressPreventsAnotherAndKeepsTheForce) {
    geo->didUpdateLocations({at(kOslo)});
    settings->setForceGeoConfigUpdate(true);
    geo->didUpdateLocations({at(northOfOslo(5000))});
    EXPECT_EQ(fetches(), 1U);
    EXPECT_TRUE(settings->forceGeoConfigUpdate());
    EXPECT_TRUE(geo->geoFeedWithSessionCall());
    EXPECT_EQ(logged("FETCH GEO REGIONS NOT CALLED"), 0);
    session().answer(kRegionsPath, 200, answerWith({}));
    phone().settle();
    EXPECT_FALSE(geo->geoFeedWithSessionCall());
    geo->didUpdateLocations({at(northOfOslo(5000))});
    EXPECT_EQ(fetches(), 2U);
}

TEST_F(VLGeoServiceRefreshTest, SuccessfulFetchStoresTimeAndPosition) {
    geo->updateConfig(at({-0.5, 179.25}));
    phone().advance(7);
    session().answer(kRegionsPath, 200, "{}");
    phone().settle();
    EXPECT_EQ(settings->fetchGeoRegionTimestamp(), phone().now());
    EXPECT_EQ(settings->oldLocation(), (Dictionary{{"Latitude", -0.5}, {"Longitude", 179.25}}));
}

TEST_F(VLGeoServiceRefreshTest, FailedFetchIsRetriedOnceWithoutDelay) {
    geo->updateConfig(at(kOslo));
    session().fail(kRegionsPath);
    phone().settle();
    EXPECT_EQ(fetches(), 2U);
    EXPECT_TRUE(geo->geoFeedWithSessionCall());
    EXPECT_EQ(settings->oldLocation(), (Dictionary{{"Latitude", kOslo.latitude}, {"Longitude", kOslo.longitude}}));
    settings->setOldLocation(std::nullopt);
    session().fail(kRegionsPath);
    phone().settle();
    EXPECT_EQ(fetches(), 2U);
    EXPECT_FALSE(geo->geoFeedWithSessionCall());
    // The position of each attempt, but no time.
    EXPECT_EQ(settings->oldLocation(), (Dictionary{{"Latitude", kOslo.latitude}, {"Longitude", kOslo.longitude}}));
    EXPECT_EQ(settings->fetchGeoRegionTimestamp(), 0);
    EXPECT_EQ(logged("************** FETCH GEO REGIONS - 1 *****************"), 1);
    EXPECT_EQ(logged("************** FETCH GEO REGIONS - 0 *****************"), 1);
}

TEST_F(VLGeoServiceRefreshTest, SuccessfulRetryCounts) {
    geo->updateConfig(at(kOslo));
    session().answer(kRegionsPath, 500, "{}");
    phone().settle();
    session().answer(kRegionsPath, 200, answerWith(describedRegions(2)));
    phone().settle();
    EXPECT_EQ(monitoredIdentifiers(), (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(settings->fetchGeoRegionTimestamp(), phone().now());
    EXPECT_FALSE(geo->geoFeedWithSessionCall());
}

TEST_F(VLGeoServiceRefreshTest, DistanceCountsFromAFailedFetchToo) {
    session().alwaysFail(kRegionsPath);
    fetchedBefore(10);
    geo->updateConfig(at(northOfOslo(2000)));
    phone().settle();
    EXPECT_EQ(fetches(), 2U);
    geo->updateConfig(at(northOfOslo(2500)));
    phone().settle();
    EXPECT_EQ(fetches(), 2U);
    geo->updateConfig(at(kOslo));
    phone().settle();
    EXPECT_EQ(fetches(), 4U);
}

TEST_F(VLGeoServiceRefreshTest, MissingAnswerPreventsFurtherFetches) {
    geo->updateConfig(at(kOslo));
    phone().advance(1'000'000);
    geo->updateConfig(at(northOfOslo(1e6)));
    EXPECT_EQ(fetches(), 1U);
    geo = makeService();
    geo->updateConfig(at(northOfOslo(1e6)));
    EXPECT_EQ(fetches(), 2U);
}

TEST_F(VLGeoServiceRefreshTest, AnswerAfterDestructionIsIgnored) {
    geo->updateConfig(at(kOslo));
    geo.reset();
    session().answer(kRegionsPath, 200, answerWith(describedRegions(2)));
    phone().settle();
    EXPECT_TRUE(monitoredIdentifiers().empty());
    EXPECT_EQ(settings->oldLocation(), std::nullopt);
}

TEST_F(VLGeoServiceRefreshTest, MalformedOldLocationCountsAsAbsent) {
    for (const auto& old :
         {Dictionary{}, Dictionary{{"Latitude", 59.91}}, Dictionary{{"Latitude", "59.91"}, {"Longitude", "10.75"}}}) {
        fetchedBefore(0);
        settings->setOldLocation(old);
        const auto before = fetches();
        makeService()->updateConfig(at(kOslo));
        EXPECT_EQ(fetches(), before + 1) << Value(old);
    }
}

TEST_F(VLGeoServiceRefreshTest, TakesTheMostAccurateUsableLocation) {
    geo->didUpdateLocations({at({1, 1}, 50), at({2, 2}, -1), at({3, 3}, 5), at({4, 4}, 5), at({5, 5}, kNaN)});
    EXPECT_NE(session().lastRequest().request.URL.absoluteString().find("latitude=3&longitude=3"), std::string::npos);
    EXPECT_EQ(logged("LATITUDE +3.000000, LONGITUDE +3.000000"), 1);
    EXPECT_EQ(log().linesContaining("LATITUDE").size(), 1U);
}

TEST_F(VLGeoServiceRefreshTest, UnusableLocationsFetchNothing) {
    geo->didUpdateLocations({});
    geo->didUpdateLocations({at(kOslo, -1), at(kOslo, -kInfinity), at(kOslo, kNaN), at({91, 0}), at({0, -181}),
                             at({kNaN, 0}), at({0, kInfinity})});
    EXPECT_EQ(fetches(), 0U);
    EXPECT_TRUE(log().linesContaining("LATITUDE").empty());
    EXPECT_TRUE(log().linesContaining("SIGNIFICANT").empty());
}

TEST_F(VLGeoServiceRefreshTest, Accuracy0IsBestAndOldLocationsAreUsable) {
    auto old = at({-1.5, -2.25}, 0);
    old.timestamp -= 1000;
    geo->didUpdateLocations({at(kOslo, 0.5), old});
    EXPECT_EQ(logged("Age:1000 seconds, ACCURACY 0.000000"), 1);
    EXPECT_EQ(logged("LATITUDE -1.500000, LONGITUDE -2.250000"), 1);
    EXPECT_EQ(logged("Attempt:0"), 1);
    EXPECT_EQ(fetches(), 1U);
}

TEST_F(VLGeoServiceRefreshTest, FutureLocationIsLoggedWithItsAbsoluteAge) {
    auto early = at(kOslo);
    early.timestamp += 7;
    geo->didUpdateLocations({early});
    EXPECT_EQ(logged("Age:7 seconds, ACCURACY 10.000000"), 1);
}

TEST_F(VLGeoServiceRefreshTest, LogsTheActivityAsAWord) {
    const std::vector<std::pair<std::int64_t, std::string>> activities = {
        {0, "Other/Unknown?"}, {1, "Other/Unknown?"},      {2, "Automotive"},
        {3, "Pedestrian"},     {4, "Boat/Train/Plane???"}, {5, "Other/Unknown?"}};
    for (const auto& [type, word] : activities) {
        manager().setCapabilities({.activityType = static_cast<CLActivityType>(type)});
        log().clear();
        geo->didUpdateLocations({at(kOslo)});
        EXPECT_EQ(logged("Activity:" + word), 1) << type;
    }
}

TEST_F(VLGeoServiceRefreshTest, FreshnessMattersOnlyWithoutSignificantChanges) {
    auto location = at(kOslo);
    location.timestamp = phone().now() - 5;
    EXPECT_TRUE(VLGeoService::isUsableLocation(location, false));
    location.timestamp = phone().now() - 5.25;
    EXPECT_TRUE(VLGeoService::isUsableLocation(location, true));
    EXPECT_TRUE(log().linesContaining("not fresh").empty());
    EXPECT_FALSE(VLGeoService::isUsableLocation(location, false));
    EXPECT_EQ(logged("Location is not fresh, is 5.25 limit is 5.00"), 1);
    EXPECT_FALSE(VLGeoService::isUsableLocation(at(kOslo, -0.1), true));
}

TEST_F(VLGeoServiceRefreshTest, DistancesFollowTheGreatCircle) {
    const auto distance = VLGeoService::calculateDistanceInMetersBetweenCoord;
    const double degree = 6371000.0 * 3.14159265358979323846 / 180;
    EXPECT_EQ(distance(kOslo, kOslo), 0);
    EXPECT_NEAR(distance({0, 0}, {0, 1}), degree, 1e-6);
    EXPECT_NEAR(distance({0, 179.5}, {0, -179.5}), degree, 1e-6);
    EXPECT_NEAR(distance({60, 0}, {60, 1}), 55596.934, 0.001);
    EXPECT_NEAR(distance({90, 0}, {-90, 0}), 180 * degree, 1e-3);
    EXPECT_NEAR(distance({10, 20}, {-10, -160}), 180 * degree, 1);
    EXPECT_NEAR(distance({59.911491, 10.757933}, {48.856614, 2.352222}), 1'342'000, 2'000);
    EXPECT_EQ(VLGeoService::calculateTimeInSecondsBetweenTimeStamps(5, 7.5), -2.5);
}

TEST_F(VLGeoServiceRefreshTest, CopiesTheThresholdsOfTheConfiguration) {
    geo->startWithConfig(
        loadedConfig(R"({"configs":{"geo_regions":{"significant_distance_m":250.5,"significant_timeperiod_s":90,)"
                     R"("polling_geostatechangeignore_timeperiod_s":30,"desired_horizontal_accuracy":12}}})"));
    EXPECT_EQ(settings->significantDistance(), 250.5);
    EXPECT_EQ(settings->significantTime(), 90);
    EXPECT_EQ(settings->geoRegionStateChangeTime(), 30);
    EXPECT_EQ(settings->desiredHorizontalAccuracy(), Value(12));
    EXPECT_EQ(logged("NO GEO CONFIG DATA RETURNED IN THE RESPONSE"), 0);
}

TEST_F(VLGeoServiceRefreshTest, ReadsThresholdsGivenAsStrings) {
    geo->startWithConfig(
        loadedConfig(R"({"configs":{"geo_regions":{"significant_distance_m":"250.5","significant_timeperiod_s":"9e1",)"
                     R"("polling_geostatechangeignore_timeperiod_s":"+30","desired_horizontal_accuracy":"12"}}})"));
    EXPECT_EQ(settings->significantDistance(), 250.5);
    EXPECT_EQ(settings->significantTime(), 90);
    EXPECT_EQ(settings->geoRegionStateChangeTime(), 30);
    EXPECT_EQ(settings->desiredHorizontalAccuracy(), Value(12.0));
}

TEST_F(VLGeoServiceRefreshTest, AbsentThresholdsStayUnchanged) {
    settings->setSignificantDistance(1);
    settings->setSignificantTime(2);
    settings->setGeoRegionStateChangeTime(3);
    settings->setDesiredHorizontalAccuracy(4);
    for (const auto* config : {R"({"configs":{"geo_regions":{}}})",
                               R"({"configs":{"geo_regions":{"significant_distance_m":"far",)"
                               R"("significant_timeperiod_s":true,"polling_geostatechangeignore_timeperiod_s":[5],)"
                               R"("desired_horizontal_accuracy":null}}})",
                               R"({"configs":{"geo_regions":{"significant_distance_m":"nan",)"
                               R"("significant_timeperiod_s":"","polling_geostatechangeignore_timeperiod_s":"5 s",)"
                               R"("desired_horizontal_accuracy":"1e999"}}})"}) {
        geo->startWithConfig(loadedConfig(config));
        EXPECT_EQ(settings->significantDistance(), 1) << config;
        EXPECT_EQ(settings->significantTime(), 2) << config;
        EXPECT_EQ(settings->geoRegionStateChangeTime(), 3) << config;
        EXPECT_EQ(settings->desiredHorizontalAccuracy(), Value(4)) << config;
    }
    EXPECT_EQ(logged("NO GEO CONFIG DATA RETURNED IN THE RESPONSE"), 0);
}

TEST_F(VLGeoServiceRefreshTest, LogsAMissingConfiguration) {
    geo->startWithConfig(loadedConfig(R"({"services":{"geo_regions":true}})"));
    EXPECT_EQ(logged("NO GEO CONFIG DATA RETURNED IN THE RESPONSE"), 1);
    geo->startWithConfig(loadedConfig(R"({"configs":{"geo_regions":[]}})"));
    EXPECT_EQ(logged("NO GEO CONFIG DATA RETURNED IN THE RESPONSE"), 2);
}

TEST_F(VLGeoServiceRefreshTest, StartsAndStopsSignificantChanges) {
    geo->startSignificantLocationUpdates();
    EXPECT_TRUE(manager().isMonitoringSignificantLocationChanges());
    geo->stopSignificantLocationUpdates();
    EXPECT_FALSE(manager().isMonitoringSignificantLocationChanges());
}

TEST_F(VLGeoServiceRefreshTest, TrackOf10000PositionsFetchesOncePerKilometre) {
    session().alwaysAnswer(kRegionsPath, 200, answerWith(describedRegions(20)));
    VLLog::sharedInstance().setLogLevel(VLLogLevel::Error);
    // Steps of 10 m: the first position fetches, and every 100th after it.
    for (int i = 0; i < 10'000; ++i) {
        geo->didUpdateLocations({at(northOfOslo(10.0001 * i))});
        if (geo->geoFeedWithSessionCall()) phone().settle();
    }
    EXPECT_EQ(fetches(), 100U);
    EXPECT_EQ(manager().monitoredRegions().size(), 20U);
}

TEST_F(VLGeoServiceRefreshTest, RestartBetweenStepsLosesNothing) {
    geo->updateConfig(at(kOslo));
    geo = makeService();  // before the answer
    geo->updateConfig(at(kOslo));
    EXPECT_EQ(fetches(), 2U);
    session().answer(kRegionsPath, 200, answerWith(describedRegions(1)));
    session().answer(kRegionsPath, 200, answerWith(describedRegions(1)));
    phone().settle();
    settings = std::make_shared<VLSettings>(phone().device());
    geo = makeService();
    geo->updateConfig(at(northOfOslo(900)));
    EXPECT_EQ(fetches(), 2U);
    phone().advance(3600);
    geo->updateConfig(at(northOfOslo(900)));
    EXPECT_EQ(fetches(), 3U);
}

TEST_F(VLGeoServiceRefreshTest, HandlesAnswersOnTheMainQueue) {
    geo->updateConfig(at(kOslo));
    session().answer(kRegionsPath, 200, answerWith(describedRegions(2)));
    EXPECT_TRUE(geo->geoFeedWithSessionCall());
    EXPECT_EQ(settings->oldLocation(), std::nullopt);
    EXPECT_TRUE(monitoredIdentifiers().empty());
    phone().runMainQueue();
    EXPECT_FALSE(geo->geoFeedWithSessionCall());
    EXPECT_EQ(monitoredIdentifiers().size(), 2U);
}

}  // namespace

}  // namespace vorlane

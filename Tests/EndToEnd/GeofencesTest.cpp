#include "Categories/NSDictionary+VLLookup.h"
#include "Tests/EndToEnd/PlacesTest.h"

namespace vorlane {

namespace {

using Texts = std::vector<std::string>;

class GeofencesTest : public PlacesTest {
protected:
    GeofencesTest() { configure({{"geo_regions", Dictionary{{"geo_mode", 2}}}}); }

    static Value regionAt(const Value& id, double latitude, double longitude) {
        return Dictionary{{"id", id},
                          {"latitude", latitude},
                          {"longitude", longitude},
                          {"radius", 100},
                          {"name", "The " + (id.is_string() ? id.get<std::string>() : "shop")},
                          {"plotwise_id", "segment of the shop"}};
    }
    void setRegions(const Array& regions) {
        service.put("regions/" + appKey(), Dictionary{{"regions", Value(regions)}});
    }
    /// Sets three regions on one street, each with its own segment.
    void setStreet() {
        Array regions;
        for (const auto* name : {"home", "cafe", "park"}) {
            auto region = regionAt(name, 59.91 + 0.01 * static_cast<double>(regions.size()), 10.75);
            region["plotwise_id"] = std::string(name) + " segment";
            regions.push_back(region);
            for (const std::string transition : {"enter", "exit"}) {
                service.put(fmt::format("geoContent/{}/{}/{}%20segment", appKey(), transition, name),
                            Dictionary{{"pushtext", transition + " " + name}, {"phash", transition + "-" + name}});
            }
        }
        setRegions(regions);
    }
    Dictionary lastGeoRequest() const {
        const auto asked = service.requests("geoContent");
        return asked.empty() ? Dictionary() : asked.back().at("payload").get_ref<const Dictionary&>();
    }
};

TEST_F(GeofencesTest, FirstPositionFetchesAndMonitorsRegions) {
    setStreet();
    begin();
    EXPECT_EQ(phone->events("significantLocationChanges").size(), 1U);
    EXPECT_EQ(requests("geoRegions"), 0U);
    moveTo(59.9125, 10.7525);
    const auto asked = service.requests("geoRegions");
    ASSERT_EQ(asked.size(), 1U);
    EXPECT_EQ(asked[0].at("query"),
              Value(Dictionary{{"latitude", "59.9125"}, {"longitude", "10.7525"}, {"max", "20"}}));
    EXPECT_EQ(identifiers("monitoredRegions"), (Texts{"cafe", "home", "park"}));
    const auto watched = phone->perform({{"do", "query"}, {"what", "monitoredRegions"}});
    EXPECT_EQ(watched[1], Value(Dictionary{{"type", "circular"},
                                           {"identifier", "home"},
                                           {"latitude", 59.91},
                                           {"longitude", 10.75},
                                           {"radius", 100.0}}));
}

TEST_F(GeofencesTest, EnteringShowsTheMessageWithPhashAndMetadata) {
    service.put(
        fmt::format("geoContent/{}/enter/4711", appKey()),
        Dictionary{{"pushtext", "50% off, Größe & more"}, {"phash", "hash"}, {"metadata", Dictionary{{"deal", 7}}}});
    auto shop = regionAt(17, 59.91, 10.75);
    shop["plotwise_id"] = 4711;
    setRegions(Array{shop});
    begin();
    moveTo(59.92, 10.75);
    region("17", "enter");

    auto request = lastGeoRequest();
    ASSERT_TRUE(dictionaryForKey(request, "deviceData"));
    EXPECT_EQ(request.at("deviceData").at("platform"), Value("iOS"));
    request.erase("deviceData");
    EXPECT_EQ(Value(request), Value(Dictionary{{"getContent", true},
                                               {"geoRegion", Dictionary{{"segmentId", 4711}, {"status", "enter"}}}}));
    ASSERT_EQ(shown().size(), 1U);
    EXPECT_EQ(shown()[0].at("alertBody"), Value("50% off, Größe & more"));
    EXPECT_EQ(shown()[0].at("userInfo"), Value(Dictionary{{"p", "hash"}, {"deal", 7}}));
}

TEST_F(GeofencesTest, OpenedMessagesPassTheirPhashToTheSession) {
    setStreet();
    begin();
    moveTo(59.90, 10.75);
    state("background");
    region("home", "enter");
    ASSERT_EQ(shown().size(), 1U);
    phone->perform({{"do", "state"}, {"to", "foreground"}});
    phone->perform({{"do", "openNotification"}, {"handle", shown()[0].at("handle")}});
    state("active");
    EXPECT_EQ(lastPayload("sessionStart")["phash"], Value("enter-home"));
}

TEST_F(GeofencesTest, EachTransitionIsShownOnceDespiteFlapping) {
    setStreet();
    begin();
    moveTo(59.905, 10.75);
    region("home", "enter");
    pass(120);
    region("home", "exit");
    pass(120);
    // The position flaps at the border of the second region.
    region("cafe", "enter");
    for (int i = 0; i < 4; ++i) {
        pass(20);
        region("cafe", "exit");
        pass(20);
        region("cafe", "enter");
    }
    pass(120);
    region("park", "enter");
    EXPECT_EQ(shownTexts(), (Texts{"enter home", "exit home", "enter cafe", "exit cafe", "enter park"}));
    EXPECT_EQ(requests("geoContent"), 5U);
    EXPECT_EQ(countLog("Flapping for enter region:The cafe"), 4);
    EXPECT_EQ(countLog("Flapping for exit region:The cafe"), 3);
}

TEST_F(GeofencesTest, StateSurvivesARestartBetweenEnterAndExit) {
    setStreet();
    begin();
    moveTo(59.905, 10.75);
    region("cafe", "enter");
    pass(100);
    restart();
    EXPECT_EQ(identifiers("monitoredRegions"), (Texts{"cafe", "home", "park"}));
    region("cafe", "exit");
    pass(100);
    region("cafe", "enter");
    EXPECT_EQ(shownTexts(), (Texts{"exit cafe"}));
    EXPECT_EQ(countLog("Flapping for enter region:The cafe"), 1);
    pass(101);  // 301 s after the enter before the restart
    region("cafe", "enter");
    EXPECT_EQ(shownTexts(), (Texts{"exit cafe", "enter cafe"}));
}

TEST_F(GeofencesTest, MonitorsTheNearest20AlongTheWay) {
    Array regions;
    for (int i = 0; i < 30; ++i) regions.push_back(regionAt(fmt::format("{:02}", i), 59.0 + 0.01 * i, 10));
    setRegions(regions);
    begin();
    moveTo(59.0, 10);
    auto watched = identifiers("monitoredRegions");
    EXPECT_EQ(watched.size(), 20U);
    EXPECT_EQ(watched.front(), "00");
    phone->takeEvents();

    moveTo(59.0, 10.0001);  // not far enough
    EXPECT_EQ(requests("geoRegions"), 1U);
    EXPECT_EQ(countLog("FETCH GEO REGIONS NOT CALLED"), 1);

    moveTo(59.29, 10);
    EXPECT_EQ(requests("geoRegions"), 2U);
    watched = identifiers("monitoredRegions");
    EXPECT_EQ(watched.size(), 20U);
    EXPECT_EQ(watched.front(), "10");
    EXPECT_EQ(watched.back(), "29");
    int started = 0;
    for (const auto& event : phone->events("monitoring")) started += event.at("action") == Value("start") ? 1 : 0;
    EXPECT_EQ(started, 10);
    EXPECT_EQ(phone->events("monitoring").size(), 20U);
}

TEST_F(GeofencesTest, FailedFetchesAreRetriedOnceAndKeepTheRegions) {
    setStreet();
    begin();
    moveTo(59.91, 10.75);
    fail("geoRegions", "garbage");
    moveTo(60.91, 10.75);
    EXPECT_EQ(requests("geoRegions"), 3U);
    EXPECT_EQ(identifiers("monitoredRegions"), (Texts{"cafe", "home", "park"}));
    service.remove("faults");
    // The position of the failed attempt applies.
    moveTo(60.91, 10.75);
    EXPECT_EQ(requests("geoRegions"), 3U);
    pass(3600);
    moveTo(60.91, 10.75);
    EXPECT_EQ(requests("geoRegions"), 4U);
}

TEST_F(GeofencesTest, FailedOrInvalidContentShowsNoMessage) {
    setStreet();
    begin();
    moveTo(59.91, 10.75);
    for (const auto* kind : {"drop", "garbage", "truncate"}) {
        fail("geoContent", kind);
        region("home", "enter");
        service.remove("faults");
        pass(301);
    }
    for (const Value& body : {Value("text"), Value(Array{}), Value(Dictionary{{"message", "text"}}),
                              Value(Dictionary{{"message", Dictionary{{"appkey", "another"}, {"pushtext", "a"}}}}),
                              Value(Dictionary{{"message", nullptr}})}) {
        service.post("faults", Dictionary{{"endpoint", "geoContent"}, {"kind", "body"}, {"body", body}});
        region("home", "enter");
        service.remove("faults");
        pass(301);
    }
    EXPECT_TRUE(shown().empty());
    // The network layer may have retried a truncated connection.
    EXPECT_GE(requests("geoContent"), 8U);
    region("home", "enter");
    EXPECT_EQ(shownTexts(), (Texts{"enter home"}));
}

TEST_F(GeofencesTest, InvalidRegionsAreSkipped) {
    const Value list = Value::parse(R"({"geo_regions": [5, null, {"id": "no centre", "radius": 5},
        {"id": {}, "latitude": 1, "longitude": 1, "radius": 5},
        {"id": "off the globe", "latitude": 91, "longitude": 1, "radius": 5},
        {"id": 17, "latitude": "59.9", "longitude": "10.7", "radius": "250"},
        {"id": "huge", "latitude": 59, "longitude": 10, "radius": 1e9, "own": {"a": [null]}}]})");
    service.post("faults", Dictionary{{"endpoint", "geoRegions"}, {"kind", "body"}, {"body", list}});
    begin();
    moveTo(59.91, 10.75);
    EXPECT_EQ(identifiers("monitoredRegions"), (Texts{"17", "huge"}));
    const auto watched = phone->perform({{"do", "query"}, {"what", "monitoredRegions"}});
    EXPECT_EQ(watched[0]["radius"], Value(250.0));
    EXPECT_EQ(watched[1]["radius"], Value(1'000'000.0));
    region("huge", "enter");
    region("17", "exit");
    EXPECT_EQ(requests("geoContent"), 0U);
}

TEST_F(GeofencesTest, WithoutPermissionNoRegionIsMonitored) {
    setStreet();
    startPhone({"--info", path("Info.json")});
    phone->perform({{"do", "locationAuthorisation"}, {"status", 2}});
    launch();
    state("active");
    phone->settle();
    EXPECT_TRUE(phone->events("significantLocationChanges").empty());
    phone->perform({{"do", "locationAuthorisation"}, {"status", 3}});
    phone->settle();
    EXPECT_EQ(phone->events("significantLocationChanges").size(), 1U);
    moveTo(59.91, 10.75);
    EXPECT_EQ(identifiers("monitoredRegions").size(), 3U);
}

TEST_F(GeofencesTest, LongWalksStayWithinTheLimits) {
    setStreet();
    begin();
    // 2 m a step, once a second: a new list every 1,000 m, and every hour in between.
    for (int i = 0; i < 2'000; ++i) {
        const Value place = Dictionary{{"latitude", 59.9 + 0.00001799 * i}, {"longitude", 10.75}};
        phone->perform({{"do", "location"}, {"locations", Value(Array{place})}});
        phone->perform({{"do", "advance"}, {"seconds", 1}});
        if (i % 100 == 0) phone->settle();
    }
    phone->settle();
    EXPECT_EQ(requests("geoRegions"), 4U);
    EXPECT_EQ(identifiers("monitoredRegions").size(), 3U);
}

}  // namespace

}  // namespace vorlane

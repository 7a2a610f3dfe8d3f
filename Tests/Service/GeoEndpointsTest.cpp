#include <string>
#include <vector>

#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

class GeoEndpointsTest : public ServiceTest {
protected:
    static Value region(const Value& id, double latitude, double longitude) {
        return {{"id", id}, {"latitude", latitude}, {"longitude", longitude}, {"radius", 100}};
    }

    void setRegions(const Value& regions) const { expectOK(client().put("/_admin/regions/K", {{"regions", regions}})); }

    ServiceAnswer ask(const std::string& query) const { return client().get("/K/T/geo/regions?" + query); }

    /// The identifiers of the regions near a place, in the order of the answer.
    std::vector<std::string> idsNear(double latitude, double longitude, int most = 20) const {
        const auto answer = ask("latitude=" + std::to_string(latitude) + "&longitude=" + std::to_string(longitude) +
                                "&max=" + std::to_string(most));
        EXPECT_EQ(answer.status, 200) << answer.body;
        std::vector<std::string> ids;
        const auto json = answer.json();
        for (const auto& found : json["geo_regions"]) ids.push_back(found["id"].get<std::string>());
        return ids;
    }

    ServiceAnswer askContent(const Value& segmentId, const std::string& status, const Value& getContent = true) const {
        return client().postJSON("/K/T/geo", {{"getContent", getContent},
                                              {"geoRegion", {{"segmentId", segmentId}, {"status", status}}},
                                              {"deviceData", {{"platform", "iOS"}}}});
    }
};

using Ids = std::vector<std::string>;

TEST_F(GeoEndpointsTest, RegionsAreSortedByDistance) {
    setRegions({region("far", 60, 10), region("near", 59.92, 10.75), region("middle", 59.6, 10.75)});
    EXPECT_EQ(idsNear(59.91, 10.75), (Ids{"near", "middle", "far"}));
    EXPECT_EQ(idsNear(60.5, 9), (Ids{"far", "near", "middle"}));
}

TEST_F(GeoEndpointsTest, DistanceFollowsTheGlobe) {
    // A degree of longitude is short in the north, and places across the date line or the pole are near.
    setRegions({region("east", 80, 1), region("north", 80.5, 0)});
    EXPECT_EQ(idsNear(80, 0), (Ids{"east", "north"}));
    setRegions({region("home", 0, 170), region("across", 0, -179)});
    EXPECT_EQ(idsNear(0, 179), (Ids{"across", "home"}));
    setRegions({region("same meridian", 85, 0), region("over the pole", 89, 180)});
    EXPECT_EQ(idsNear(89.5, 0), (Ids{"over the pole", "same meridian"}));
    setRegions({region("antipode", 0, 180), region("side", 0, 90)});
    EXPECT_EQ(idsNear(0, 0), (Ids{"side", "antipode"}));
}

TEST_F(GeoEndpointsTest, EquallyNearRegionsKeepTheirOrder) {
    setRegions({region("c", 1, 1), region("a", 1, 1), region("b", 1, 1)});
    EXPECT_EQ(idsNear(0, 0), (Ids{"c", "a", "b"}));
}

TEST_F(GeoEndpointsTest, ReturnsAtMostMaxRegions) {
    Value regions = Value::array();
    for (int i = 0; i < 25; ++i) regions.push_back(region("r" + std::to_string(i), 0, i));
    setRegions(regions);
    EXPECT_EQ(idsNear(0, 0, 20).size(), 20u);
    EXPECT_EQ(idsNear(0, 0, 20).back(), "r19");
    EXPECT_EQ(idsNear(0, 24, 1), (Ids{"r24"}));
    EXPECT_EQ(idsNear(0, 0, 0), Ids());
    EXPECT_EQ(idsNear(0, 0, 1000).size(), 25u);
}

TEST_F(GeoEndpointsTest, RegionsAreReturnedCompletely) {
    const Value whole = {{"id", 17},       {"latitude", -59.5},   {"longitude", 10},    {"radius", 250.5},
                         {"name", "Café"}, {"plotwise_id", 4711}, {"own", {1, nullptr}}};
    setRegions(Value::array({whole}));
    EXPECT_EQ(ask("latitude=0&longitude=0&max=20").json(), Value({{"geo_regions", Value::array({whole})}}));
}

TEST_F(GeoEndpointsTest, EachAppHasItsOwnRegions) {
    setRegions(Value::array({region("a", 0, 0)}));
    EXPECT_EQ(client().get("/L/T/geo/regions?latitude=0&longitude=0&max=20").json(),
              Value({{"geo_regions", Value::array()}}));
    EXPECT_EQ(client().get("/K/U/geo/regions?latitude=0&longitude=0&max=20").json()["geo_regions"].size(), 1u);
}

TEST_F(GeoEndpointsTest, CoordinatesAcceptAnyNumberFormat) {
    setRegions(Value::array({region("a", 0, 0)}));
    for (const std::string query :
         {"latitude=1e-05&longitude=-1.5e2&max=20", "latitude=-90&longitude=180&max=20",
          "latitude=90&longitude=-180&max=9223372036854775807", "max=1&longitude=10&latitude=59.91388888888889"})
        EXPECT_EQ(ask(query).json()["geo_regions"].size(), 1u) << query;
}

TEST_F(GeoEndpointsTest, InvalidCoordinatesAreRefused) {
    for (const std::string text : {"", "x", "90.1", "-90.1", "nan", "inf", "1,5", "0x1", "59%20"})
        expectError(ask("latitude=" + text + "&longitude=10&max=20"), 400,
                    "\"latitude\" is not a number from -90 to 90");
    for (const std::string text : {"", "180.1", "-180.1", "nan", "(null)"})
        expectError(ask("latitude=10&longitude=" + text + "&max=20"), 400,
                    "\"longitude\" is not a number from -180 to 180");
    expectError(ask("longitude=10&max=20"), 400, "\"latitude\" is not a number from -90 to 90");
    expectError(ask("latitude=10&longitude=10"), 400, "\"max\" is missing");
    expectError(ask("latitude=10&longitude=10&max=-1"), 400, "\"max\" is not a number from 0 to 9223372036854775807");
    EXPECT_EQ(lastRecord()["endpoint"], "geoRegions");
    EXPECT_EQ(lastRecord()["appKey"], "K");
    EXPECT_EQ(lastRecord()["trackingId"], "T");
}

TEST_F(GeoEndpointsTest, MessagesAreSentAsTemplates) {
    expectOK(client().put(
        "/_admin/geoContent/K/enter/cafe",
        {{"pushtext", "50% off & more"}, {"phash", "hash"}, {"sound", "bell"}, {"metadata", {{"deal", "Größe"}}}}));
    EXPECT_EQ(askContent("cafe", "enter").json(),
              Value({{"message",
                      {{"appkey", "K"},
                       {"pushtext", "50%25%20off%20%26%20more"},
                       {"phash", "hash"},
                       {"messagecontent", "%7B%22deal%22%3A%22Gr%C3%B6%C3%9Fe%22%2C%22sound%22%3A%22bell%22%7D"}}}}));
}

TEST_F(GeoEndpointsTest, AbsentFieldsOfAMessageAreOmitted) {
    expectOK(client().put("/_admin/geoContent/K/enter/cafe", {{"pushtext", "a"}}));
    EXPECT_EQ(askContent("cafe", "enter").json(), Value({{"message", {{"appkey", "K"}, {"pushtext", "a"}}}}));
    expectOK(client().put("/_admin/geoContent/K/enter/cafe",
                          {{"pushtext", "a"}, {"phash", nullptr}, {"sound", nullptr}, {"metadata", nullptr}}));
    EXPECT_EQ(askContent("cafe", "enter").json(), Value({{"message", {{"appkey", "K"}, {"pushtext", "a"}}}}));
    expectOK(client().put("/_admin/geoContent/K/enter/cafe", {{"pushtext", "a"}, {"sound", "s"}}));
    EXPECT_EQ(askContent("cafe", "enter").json()["message"]["messagecontent"], "%7B%22sound%22%3A%22s%22%7D");
}

TEST_F(GeoEndpointsTest, SegmentsHaveContentForEachTransition) {
    expectOK(client().put("/_admin/geoContent/K/enter/cafe", {{"pushtext", "in"}}));
    expectOK(client().put("/_admin/geoContent/K/exit/cafe", {{"pushtext", "out"}}));
    EXPECT_EQ(askContent("cafe", "enter").json()["message"]["pushtext"], "in");
    EXPECT_EQ(askContent("cafe", "exit").json()["message"]["pushtext"], "out");
}

TEST_F(GeoEndpointsTest, SegmentsMayBeNumbersOrStrings) {
    expectOK(client().put("/_admin/geoContent/K/enter/4711", {{"pushtext", "a"}}));
    EXPECT_TRUE(askContent(4711, "enter").json().contains("message"));
    EXPECT_TRUE(askContent("4711", "enter").json().contains("message"));
    expectOK(client().put("/_admin/geoContent/K/enter/a/b%20c", {{"pushtext", "a"}}));
    EXPECT_TRUE(askContent("a/b c", "enter").json().contains("message"));
}

TEST_F(GeoEndpointsTest, WithoutContentThereIsNoMessage) {
    expectOK(askContent("cafe", "enter"));
    expectOK(client().put("/_admin/geoContent/K/enter/cafe", {{"pushtext", "in"}}));
    expectOK(askContent("cafe", "exit"));
    expectOK(askContent("other", "enter"));
    expectOK(client().postJSON("/L/T/geo",
                               {{"getContent", true}, {"geoRegion", {{"segmentId", "cafe"}, {"status", "enter"}}}}));
}

TEST_F(GeoEndpointsTest, ContentIsSentOnlyOnRequest) {
    expectOK(client().put("/_admin/geoContent/K/enter/cafe", {{"pushtext", "in"}}));
    expectOK(askContent("cafe", "enter", false));
    expectOK(askContent("cafe", "enter", "yes"));
    EXPECT_TRUE(askContent("cafe", "enter").json().contains("message"));
}

TEST_F(GeoEndpointsTest, ContentRequestsNeedSegmentAndTransition) {
    const auto post = [this](const Value& body) { return client().postJSON("/K/T/geo", body); };
    expectError(post(Value::object()), 400, "\"geoRegion\" is missing or not an object");
    expectError(post({{"geoRegion", "cafe"}}), 400, "\"geoRegion\" is missing or not an object");
    expectError(post({{"geoRegion", {{"status", "enter"}}}}), 400, "\"segmentId\" is missing, empty or not a string");
    expectError(post({{"geoRegion", {{"segmentId", true}, {"status", "enter"}}}}), 400,
                "\"segmentId\" is missing, empty or not a string");
    expectError(post({{"geoRegion", {{"segmentId", "a"}}}}), 400, "\"status\" is missing, empty or not a string");
    expectError(post({{"geoRegion", {{"segmentId", "a"}, {"status", "dwell"}}}}), 400,
                "\"status\" is neither \"enter\" nor \"exit\"");
    expectError(client().postForm("/K/T/geo", Value::object()), 400, "the body is not of type application/json");
    EXPECT_EQ(lastRecord()["endpoint"], "geoContent");
}

TEST_F(GeoEndpointsTest, TrackingIdsMayContainSlashes) {
    setRegions(Value::array({region("a", 0, 0)}));
    EXPECT_EQ(client().get("/K/a/geo/b/geo/regions?latitude=0&longitude=0&max=20").status, 200);
    EXPECT_EQ(lastRecord()["trackingId"], "a/geo/b");
    EXPECT_EQ(client().get("/api/apps/K/tracking/a/geo/b/tag/x").json(), Value({{"value", nullptr}}));
}

TEST_F(GeoEndpointsTest, ValidRequestsMakeTheirTrackingIdKnown) {
    const auto read = [this](const std::string& user) {
        return client().get("/api/apps/K/tracking/" + user + "/tag/x").json();
    };
    client().get("/K/R/geo/regions?latitude=x");
    EXPECT_TRUE(read("R").contains("error"));
    client().get("/K/R/geo/regions?latitude=0&longitude=0&max=20");
    EXPECT_TRUE(read("R").contains("value"));
    client().postJSON("/K/C/geo", {{"geoRegion", {{"segmentId", "a"}, {"status", "exit"}}}});
    EXPECT_TRUE(read("C").contains("value"));
}

TEST_F(GeoEndpointsTest, FaultsApplyToEachEndpoint) {
    expectOK(client().put("/_admin/geoContent/K/enter/cafe", {{"pushtext", "in"}}));
    addFault({{"endpoint", "geoRegions"}, {"kind", "status"}, {"status", 503}, {"count", 1}});
    addFault({{"endpoint", "geoContent"}, {"kind", "drop"}, {"count", 1}});
    expectError(ask("latitude=0&longitude=0&max=20"), 503, "a scripted fault");
    EXPECT_EQ(askContent("cafe", "enter").status, 0);
    EXPECT_EQ(ask("latitude=0&longitude=0&max=20").status, 200);
    EXPECT_TRUE(askContent("cafe", "enter").json().contains("message"));
}

}  // namespace
}  // namespace vorlane::service

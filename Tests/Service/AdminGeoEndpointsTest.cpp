#include <string>

#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

class AdminGeoEndpointsTest : public ServiceTest {
protected:
    static Value region(const Value& id) {
        return {{"id", id}, {"latitude", 59.91}, {"longitude", 10.75}, {"radius", 100}};
    }
    /// A valid region with one field replaced.
    static Value regionWith(const std::string& key, const Value& value) {
        auto changed = region("a");
        changed[key] = value;
        return changed;
    }

    ServiceAnswer setAll(const Value& regions) const {
        return client().put("/_admin/regions/K", {{"regions", regions}});
    }
    ServiceAnswer set(const std::string& id, const Value& body) const {
        return client().put("/_admin/regions/K/" + id, body);
    }
    Value regions() const { return client().get("/_admin/regions/K").json()["regions"]; }
    Value contents() const { return client().get("/_admin/geoContent/K").json()["geoContent"]; }
};

TEST_F(AdminGeoEndpointsTest, RegionsAreListedUnchanged) {
    EXPECT_EQ(regions(), Value::array());
    const Value list = {region("b"), region(17), region("a")};
    expectOK(setAll(list));
    EXPECT_EQ(regions(), list);
    EXPECT_EQ(client().get("/_admin/regions/L").json(), Value({{"regions", Value::array()}}));
}

TEST_F(AdminGeoEndpointsTest, ANewListReplacesTheOldList) {
    expectOK(setAll({region("a"), region("b")}));
    expectOK(setAll({region("c"), region("a")}));
    EXPECT_EQ(regions(), Value({region("c"), region("a")}));
    expectOK(setAll(Value::array()));
    EXPECT_EQ(regions(), Value::array());
}

TEST_F(AdminGeoEndpointsTest, OneRegionMayBeAddedOrReplaced) {
    expectOK(setAll({region("a"), region("b")}));
    auto changed = region("a");
    changed["name"] = "Home";
    expectOK(set("a", changed));
    auto added = region("c");
    added.erase("id");
    expectOK(set("c", added));
    EXPECT_EQ(regions(), Value({changed, region("b"), region("c")}));
}

TEST_F(AdminGeoEndpointsTest, NumericIdentifiersEqualTheirStrings) {
    expectOK(set("17", region(17)));
    EXPECT_EQ(regions(), Value::array({region(17)}));
    expectOK(set("17", region("17")));
    EXPECT_EQ(regions(), Value::array({region("17")}));
    expectError(set("18", region(17)), 400, "\"id\" differs from the path");
    EXPECT_EQ(regions(), Value::array({region("17")}));
}

TEST_F(AdminGeoEndpointsTest, IdentifiersMayContainSlashesAndBlanks) {
    expectOK(set("a/b%20c", region("a/b c")));
    expectOK(client().del("/_admin/regions/K/a/b%20c"));
    EXPECT_EQ(regions(), Value::array());
}

TEST_F(AdminGeoEndpointsTest, RegionsMayBeRemovedSinglyOrTogether) {
    expectOK(setAll({region("a"), region("b"), region("c")}));
    expectOK(client().put("/_admin/regions/L", {{"regions", Value::array({region("a")})}}));
    expectOK(client().del("/_admin/regions/K/b"));
    EXPECT_EQ(regions(), Value({region("a"), region("c")}));
    expectError(client().del("/_admin/regions/K/b"), 404, "there is no such region");
    expectOK(client().del("/_admin/regions/K"));
    EXPECT_EQ(regions(), Value::array());
    EXPECT_EQ(client().get("/_admin/regions/L").json()["regions"].size(), 1u);
}

TEST_F(AdminGeoEndpointsTest, ListsAreSetAtomically) {
    expectOK(setAll(Value::array({region("a")})));
    expectError(setAll({region("b"), region("b")}), 400, "the region \"b\" is listed twice");
    expectError(setAll({region(17), region("17")}), 400, "the region \"17\" is listed twice");
    expectError(setAll({region("b"), 5}), 400, "an element of \"regions\" is not an object");
    expectError(setAll({region("b"), regionWith("radius", 0)}), 400,
                "\"radius\" is not a number above 0 and up to 20015087");
    expectError(setAll("b"), 400, "\"regions\" is missing or not a list");
    expectError(client().put("/_admin/regions/K", Value::object()), 400, "\"regions\" is missing or not a list");
    EXPECT_EQ(client().put("/_admin/regions/K", 5).status, 400);
    EXPECT_EQ(regions(), Value::array({region("a")}));
}

TEST_F(AdminGeoEndpointsTest, RegionsNeedIdentifierCentreAndRadius) {
    for (const auto& value : {Value(), Value(true), Value("")})
        expectError(setAll(Value::array({regionWith("id", value)})), 400, "\"id\" is missing, empty or not a string");
    for (const auto& value : {Value(), Value("59"), Value(90.001), Value(-90.001)})
        expectError(setAll(Value::array({regionWith("latitude", value)})), 400,
                    "\"latitude\" is not a number from -90 to 90");
    for (const auto& value : {Value(), Value("10"), Value(180.001), Value(-180.001)})
        expectError(setAll(Value::array({regionWith("longitude", value)})), 400,
                    "\"longitude\" is not a number from -180 to 180");
    for (const auto& value : {Value(), Value("1"), Value(0), Value(-1), Value(3e7)})
        expectError(setAll(Value::array({regionWith("radius", value)})), 400,
                    "\"radius\" is not a number above 0 and up to 20015087");
    expectError(setAll(Value::array({regionWith("name", 5)})), 400, "\"name\" is not a string");
    for (const auto& value : {Value(), Value(true), Value(Value::array())})
        expectError(setAll(Value::array({regionWith("plotwise_id", value)})), 400,
                    "\"plotwise_id\" is missing, empty or not a string");
    EXPECT_EQ(regions(), Value::array());
}

TEST_F(AdminGeoEndpointsTest, ExtremeCoordinatesAreValid) {
    expectOK(setAll({{{"id", "a"}, {"latitude", 90}, {"longitude", -180}, {"radius", 0.001}},
                     {{"id", "b"}, {"latitude", -90}, {"longitude", 180}, {"radius", 2e7}}}));
    EXPECT_EQ(regions().size(), 2u);
}

TEST_F(AdminGeoEndpointsTest, ContentIsListedBySegmentAndTransition) {
    EXPECT_EQ(contents(), Value::array());
    const Value full = {{"pushtext", "in"}, {"phash", "p"}, {"sound", "s"}, {"metadata", {{"a", 1}}}};
    expectOK(client().put("/_admin/geoContent/K/exit/b", {{"pushtext", "out"}}));
    expectOK(client().put("/_admin/geoContent/K/enter/b", full));
    expectOK(client().put("/_admin/geoContent/K/exit/a", {{"pushtext", "bye"}}));
    const auto plain = [](const std::string& text) {
        return Value{{"pushtext", text}, {"phash", nullptr}, {"sound", nullptr}, {"metadata", Value::object()}};
    };
    EXPECT_EQ(contents(), Value({{{"segmentId", "a"}, {"transition", "exit"}, {"message", plain("bye")}},
                                 {{"segmentId", "b"}, {"transition", "enter"}, {"message", full}},
                                 {{"segmentId", "b"}, {"transition", "exit"}, {"message", plain("out")}}}));
    EXPECT_EQ(client().get("/_admin/geoContent/L").json(), Value({{"geoContent", Value::array()}}));
}

TEST_F(AdminGeoEndpointsTest, ListedContentMayBeSetAgain) {
    expectOK(client().put("/_admin/geoContent/K/enter/a", {{"pushtext", "in"}, {"metadata", {{"a", 1}}}}));
    const auto before = contents();
    expectOK(client().put("/_admin/geoContent/K/enter/a", before[0]["message"]));
    EXPECT_EQ(contents(), before);
}

TEST_F(AdminGeoEndpointsTest, ContentMayBeRemovedSinglyOrTogether) {
    for (const std::string path : {"K/enter/a", "K/exit/a", "K/enter/b", "L/enter/a"})
        expectOK(client().put("/_admin/geoContent/" + path, {{"pushtext", "x"}}));
    expectOK(client().del("/_admin/geoContent/K/enter/a"));
    EXPECT_EQ(contents().size(), 2u);
    expectError(client().del("/_admin/geoContent/K/enter/a"), 404, "the segment has no such content");
    expectOK(client().del("/_admin/geoContent/K"));
    EXPECT_EQ(contents(), Value::array());
    EXPECT_EQ(client().get("/_admin/geoContent/L").json()["geoContent"].size(), 1u);
}

TEST_F(AdminGeoEndpointsTest, UnusableContentIsRefused) {
    const auto set = [this](const Value& body) { return client().put("/_admin/geoContent/K/enter/a", body); };
    expectError(set(Value::object()), 400, "\"pushtext\" is missing, empty or not a string");
    expectError(set({{"pushtext", 5}}), 400, "\"pushtext\" is missing, empty or not a string");
    expectError(set({{"pushtext", "a"}, {"phash", ""}}), 400, "\"phash\" is missing, empty or not a string");
    expectError(set({{"pushtext", "a"}, {"sound", 5}}), 400, "\"sound\" is missing, empty or not a string");
    expectError(set({{"pushtext", "a"}, {"metadata", "b"}}), 400, "\"metadata\" is not an object");
    expectError(set({{"pushtext", "a"}, {"metadata", {{"sound", "b"}}}}), 400, "\"metadata\" has \"sound\"");
    expectError(set({{"pushtext", "a"}, {"pushText", "b"}}), 400, "unknown name \"pushText\"");
    const std::string transition = "the transition is neither \"enter\" nor \"exit\"";
    expectError(client().put("/_admin/geoContent/K/dwell/a", {{"pushtext", "a"}}), 400, transition);
    expectError(client().del("/_admin/geoContent/K/dwell/a"), 400, transition);
    EXPECT_EQ(contents(), Value::array());
}

}  // namespace
}  // namespace vorlane::service

#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

class TagEndpointsTest : public ServiceTest {
protected:
    Value read(const std::string& name) const {
        const auto answer = client().get("/api/apps/K/tracking/T/tag/" + name);
        EXPECT_EQ(answer.status, 200);
        return answer.json();
    }

    ServiceAnswer set(const Value& body) const { return client().postJSON("/api/apps/K/tracking/T", body); }

    static Value tag(const std::string& name, const Value& value, const std::string& type) {
        return {{"name", name}, {"value", value}, {"type", type}};
    }

    void expectRead(const std::string& name, const Value& value) const {
        EXPECT_EQ(read(name), Value({{"value", value}}));
    }
};

TEST_F(TagEndpointsTest, StringsAreReturnedUnchanged) {
    expectOK(set(tag("city", "Oslo", "string")));
    expectRead("city", "Oslo");
    expectOK(set(tag("city", "42", "string")));
    expectRead("city", "42");
    expectOK(set(tag("city", "", "string")));
    expectRead("city", "");
}

TEST_F(TagEndpointsTest, NumericAndTimestampTagsAreNumbers) {
    for (const std::string type : {"numeric", "timestamp"}) {
        expectOK(set(tag("n", "42", type)));
        EXPECT_EQ(client().get("/api/apps/K/tracking/T/tag/n").body, R"({"value":42})");
        expectOK(set(tag("n", "-4.5", type)));
        expectRead("n", -4.5);
        expectOK(set(tag("n", "1500000000000", type)));
        expectRead("n", 1500000000000);
    }
}

TEST_F(TagEndpointsTest, InvalidNumericTagsAreStrings) {
    for (const std::string text : {"many", "", "1 ", " 1", "1,5", "0x10", "inf", "nan", "2019-01-01"}) {
        expectOK(set(tag("n", text, "numeric")));
        expectRead("n", text);
    }
}

TEST_F(TagEndpointsTest, UnknownTagsAreNull) {
    set(tag("city", "Oslo", "string"));
    expectRead("town", nullptr);
}

TEST_F(TagEndpointsTest, UnknownTrackingIdsAreErrors) {
    EXPECT_EQ(read("city"), Value({{"error", "tracking id not found"}}));
    // Reading has not made the user known.
    EXPECT_EQ(read("city"), Value({{"error", "tracking id not found"}}));
    client().postJSON("/api/apps/OTHER/tracking/T", tag("city", "Oslo", "string"));
    EXPECT_EQ(read("city"), Value({{"error", "tracking id not found"}}));
}

TEST_F(TagEndpointsTest, OtherRequestsMakeTheTrackingIdKnown) {
    client().get("/config/application/ios/K?trackingId=C");
    client().postForm("/0.8/register_app_event",
                      {{"app_key", "K"}, {"tracking_id", "E"}, {"event_type", "t"}, {"event_label", ""}});
    client().postJSON(
        "/v1/device",
        {{"appkey", "K"}, {"trackingid", "R"}, {"device_id", "D"}, {"devicetoken", "00"}, {"type", "register"}});
    client().del("/api/apps/K/tracking/X/tag/*");
    for (const std::string trackingId : {"C", "E", "R", "X"}) {
        EXPECT_EQ(client().get("/api/apps/K/tracking/" + trackingId + "/tag/a").json(), Value({{"value", nullptr}}))
            << trackingId;
    }
}

TEST_F(TagEndpointsTest, ListsSetSeveralTags) {
    expectOK(set({{"tags", {tag("a", "1", "numeric"), tag("b", "x", "string")}}, {"appkey", "K"}}));
    expectRead("a", 1);
    expectRead("b", "x");
}

TEST_F(TagEndpointsTest, ObjectsSetSeveralTags) {
    expectOK(set({{"tags", {{"a", 1}, {"b", "2"}, {"c", {{"value", "3"}, {"type", "numeric"}}}, {"d", true}}}}));
    expectRead("a", 1);
    expectRead("b", "2");
    expectRead("c", 3);
    expectRead("d", "true");
}

TEST_F(TagEndpointsTest, BatchesMayBeEmpty) {
    expectOK(set({{"tags", Value::array()}}));
    expectOK(set({{"tags", Value::object()}}));
    EXPECT_EQ(listOf("tags"), Value::array());
}

TEST_F(TagEndpointsTest, BatchesAreSetAtomically) {
    expectError(set({{"tags", {tag("a", "1", "string"), tag("", "2", "string")}}}), 400,
                "\"name\" is missing, empty or not a string");
    expectError(set({{"tags", {tag("a", "1", "string"), 5}}}), 400, "an element of \"tags\" is not an object");
    expectError(set({{"tags", "a"}}), 400, "\"tags\" is neither a list nor an object");
    EXPECT_EQ(listOf("tags"), Value::array());
    EXPECT_EQ(listOf("requests").size(), 3u);
}

TEST_F(TagEndpointsTest, TagsNeedAKnownTypeAndAPlainValue) {
    const std::string unknownType = "a tag's \"type\" is none of \"string\", \"numeric\", \"timestamp\"";
    expectError(set(tag("a", "1", "date")), 400, unknownType);
    expectError(set({{"name", "a"}, {"value", "1"}, {"type", 2}}), 400, unknownType);
    expectError(set(tag("a", Value::array(), "string")), 400,
                "the value of the tag \"a\" is neither a string nor a number");
    expectError(set({{"value", "1"}, {"type", "string"}}), 400, "\"name\" is missing, empty or not a string");
    EXPECT_EQ(listOf("tags"), Value::array());
}

TEST_F(TagEndpointsTest, TagsWithoutAValueAreRemoved) {
    set(tag("a", "1", "string"));
    set(tag("b", "1", "string"));
    expectOK(set({{"name", "a"}, {"type", "string"}}));
    expectOK(set(tag("b", nullptr, "string")));
    expectRead("a", nullptr);
    expectRead("b", nullptr);
}

TEST_F(TagEndpointsTest, TagsMayChangeTheirType) {
    set(tag("a", "1", "string"));
    set(tag("a", "1", "numeric"));
    EXPECT_EQ(listOf("tags"), Value::parse(R"([{"appKey": "K", "trackingId": "T", "name": "a", "type": "numeric",
                                                 "value": 1}])"));
}

TEST_F(TagEndpointsTest, DeletingRemovesAllTagsOfOneUser) {
    set({{"tags", {{"a", 1}, {"b", 2}}}});
    client().postJSON("/api/apps/K/tracking/U", tag("a", "3", "string"));
    client().postJSON("/api/apps/L/tracking/T", tag("a", "4", "string"));
    expectOK(client().del("/api/apps/K/tracking/T/tag/*"));
    EXPECT_EQ(listOf("tags").size(), 2u);
    EXPECT_EQ(listOf("tags", "?appKey=K&trackingId=T"), Value::array());
    expectRead("a", nullptr);
    EXPECT_EQ(lastRecord()["path"], "/api/apps/K/tracking/T/tag/a");
    EXPECT_EQ(listOf("requests", "?endpoint=deleteAllTags")[0]["path"], "/api/apps/K/tracking/T/tag/*");
}

TEST_F(TagEndpointsTest, EncodedStarsDelete) {
    set(tag("a", "1", "string"));
    expectOK(client().del("/api/apps/K/tracking/T/tag/%2A"));
    EXPECT_EQ(listOf("tags"), Value::array());
}

TEST_F(TagEndpointsTest, OneTagCannotBeDeletedByName) {
    set(tag("a", "1", "string"));
    EXPECT_EQ(client().del("/api/apps/K/tracking/T/tag/a").status, 405);
    expectRead("a", "1");
}

TEST_F(TagEndpointsTest, NamesMayContainAnyCharacter) {
    set(tag("a/b c/\xC3\xA9%+", "1", "string"));
    expectRead("a/b%20c/%C3%A9%25+", "1");
    expectRead("a%2Fb%20c%2F%c3%a9%25%2B", "1");
    set(tag("/tag/", "2", "string"));
    expectRead("/tag/", "2");
}

TEST_F(TagEndpointsTest, TrackingIdsMayContainSlashes) {
    expectOK(client().postJSON("/api/apps/K/tracking/a/b", tag("x", "1", "string")));
    EXPECT_EQ(client().get("/api/apps/K/tracking/a/b/tag/x").json(), Value({{"value", "1"}}));
    EXPECT_EQ(listOf("tags")[0]["trackingId"], "a/b");
    expectOK(client().del("/api/apps/K/tracking/a/b/tag/*"));
    EXPECT_EQ(listOf("tags"), Value::array());
}

TEST_F(TagEndpointsTest, EmptyNamesAndUsersAreNotFound) {
    // The path names a user "T/tag/", whose tags could be written.
    EXPECT_EQ(client().get("/api/apps/K/tracking/T/tag/").status, 405);
    EXPECT_EQ(client().get("/api/apps//tracking/T/tag/a").status, 404);
    EXPECT_EQ(client().postJSON("/api/apps/K/tracking/", tag("x", "1", "string")).status, 404);
    EXPECT_EQ(lastRecord()["endpoint"], "unknown");
}

TEST_F(TagEndpointsTest, FormsAreNotJSONBodies) {
    expectError(client().postForm("/api/apps/K/tracking/T", tag("x", "1", "string")), 400,
                "the body is not of type application/json");
}

}  // namespace
}  // namespace vorlane::service

#include <string>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Simulator/Service/Pages/SamplePages.h"
#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

const Value kRequest = {{"getContent", true}, {"interstitial", {{"timezone", "+60"}}}, {"sid", "S"}};

class InterstitialEndpointsTest : public ServiceTest {
protected:
    ServiceAnswer ask(const std::string& placement, const Value& body = kRequest,
                      const std::string& user = "/K/T") const {
        return client().postJSON(user + "/interstitial/" + placement, body);
    }

    void set(const std::string& placement, const Value& body) const {
        expectOK(client().put("/_admin/interstitials/K/" + placement, body));
    }

    /// The value of "messagecontent", with its page decoded.
    static Value content(const Value& answer) {
        const auto text = stringByRemovingPercentEncoding(answer["message"]["messagecontent"].get<std::string>());
        EXPECT_TRUE(text);
        auto content = Value::parse(text.value_or(""), nullptr, false);
        EXPECT_TRUE(content.is_object());
        const auto page = stringByRemovingPercentEncoding(content["html"].get<std::string>());
        EXPECT_TRUE(page);
        content["html"] = page.value_or("");
        return content;
    }
};

TEST_F(InterstitialEndpointsTest, ReturnsPageMetadataAndPhash) {
    set("Store%20Launch", {{"html", "<h1>Open</h1>"},
                           {"metadata", {{"theme", "dark"}, {"nested", {1, {{"a", nullptr}}}}}},
                           {"phash", "p1"}});
    const auto answer = ask("Store%20Launch");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.headers.at("Content-Type"), "application/json");
    const auto json = answer.json();
    EXPECT_EQ(json, Value({{"message", {{"messagecontent", json["message"]["messagecontent"]}, {"phash", "p1"}}}}));
    EXPECT_EQ(content(json), Value({{"html", "<h1>Open</h1>"}, {"theme", "dark"}, {"nested", {1, {{"a", nullptr}}}}}));
}

TEST_F(InterstitialEndpointsTest, ContentAndPageAreEachPercentEncoded) {
    set("Feedback", {{"html", "<p>50 %"}});
    EXPECT_EQ(ask("Feedback").body,
              R"({"message":{"messagecontent":"%7B%22html%22%3A%22%253Cp%253E50%2520%2525%22%7D"}})");
}

TEST_F(InterstitialEndpointsTest, PagesArriveUnchanged) {
    const std::string page = std::string("\"\\/%41%zz+&\r\n\t<\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80>") + '\0' + "end";
    set("Placement%20A", {{"html", page}, {"metadata", {{page, page}}}, {"phash", page}});
    const auto json = ask("Placement%20A").json();
    EXPECT_EQ(content(json), Value({{"html", page}, {page, page}}));
    EXPECT_EQ(json["message"]["phash"], page);
}

TEST_F(InterstitialEndpointsTest, PhashesMayBeAbsent) {
    set("Feedback", {{"html", "x"}, {"metadata", nullptr}, {"phash", nullptr}});
    EXPECT_FALSE(ask("Feedback").json()["message"].contains("phash"));
}

TEST_F(InterstitialEndpointsTest, NewAppKeysHaveTheSamplePages) {
    ASSERT_EQ(samplePages().size(), 7u);
    for (const auto& sample : samplePages()) {
        const auto json = ask(stringByAddingPercentEncoding(sample.name, alphanumericCharacterSet())).json();
        EXPECT_EQ(content(json), Value({{"html", *sample.html}, {"title", sample.metadata.at("title")}}))
            << sample.name;
        EXPECT_EQ(json["message"]["phash"], Value(*sample.phash)) << sample.name;
    }
}

TEST_F(InterstitialEndpointsTest, PlacementsWithoutContentReturnNoMessage) {
    for (const std::string placement : {"Push%20Open", "Store%20Launch", "Placement%201", "Placement%20Z", "Elsewhere"})
        expectOK(ask(placement));
}

TEST_F(InterstitialEndpointsTest, PlacementsBelongToOneApp) {
    set("Feedback", {{"html", "mine"}});
    expectOK(client().del("/_admin/interstitials/K/App%20Open"));
    EXPECT_EQ(content(ask("Feedback").json())["html"], "mine");
    EXPECT_NE(content(ask("Feedback", kRequest, "/L/T").json())["html"], "mine");
    EXPECT_FALSE(ask("App%20Open").json().contains("message"));
    EXPECT_TRUE(ask("App%20Open", kRequest, "/L/T").json().contains("message"));
}

TEST_F(InterstitialEndpointsTest, RequestsAreRecordedAndMakeTheirUserKnown) {
    ask("App%20Open");
    const auto record = lastRecord();
    EXPECT_EQ(record["endpoint"], "interstitial");
    EXPECT_EQ(record["path"], "/K/T/interstitial/App%20Open");
    EXPECT_EQ(record["appKey"], "K");
    EXPECT_EQ(record["trackingId"], "T");
    EXPECT_EQ(record["payload"], kRequest);
    EXPECT_EQ(client().get("/api/apps/K/tracking/T/tag/a").json(), Value({{"value", nullptr}}));
}

TEST_F(InterstitialEndpointsTest, TrackingIdsMayContainTheEndpointsName) {
    for (const std::string trackingId : {"a/b", "interstitial", "a/interstitial/b"}) {
        EXPECT_TRUE(ask("Feedback", kRequest, "/K/" + trackingId).json().contains("message")) << trackingId;
        EXPECT_EQ(lastRecord()["trackingId"], trackingId);
    }
}

TEST_F(InterstitialEndpointsTest, RequestsWithoutGetContentAreRefused) {
    expectError(ask("Feedback", {{"interstitial", {{"timezone", "+60"}}}}), 400, "\"getContent\" is not true");
    expectError(ask("Feedback", {{"getContent", false}, {"interstitial", {{"timezone", "+60"}}}}), 400,
                "\"getContent\" is not true");
    expectError(ask("Feedback", {{"getContent", true}}), 400, "\"interstitial\" is missing or not an object");
    expectError(ask("Feedback", {{"getContent", true}, {"interstitial", "+60"}}), 400,
                "\"interstitial\" is missing or not an object");
    expectError(ask("Feedback", {{"getContent", true}, {"interstitial", Value::object()}}), 400,
                "\"timezone\" is missing, empty or not a string");
    expectError(client().postForm("/K/T/interstitial/Feedback", kRequest), 400,
                "the body is not of type application/json");
    EXPECT_EQ(client().post("/K/T/interstitial/Feedback", "{", "application/json").status, 400);
    EXPECT_EQ(listOf("requests", "?endpoint=interstitial&status=400").size(), 7u);
    // No refused request has made the user known.
    EXPECT_TRUE(client().get("/api/apps/K/tracking/T/tag/a").json().contains("error"));
}

TEST_F(InterstitialEndpointsTest, OnlyPOSTIsSupported) {
    const auto answer = client().get("/K/T/interstitial/Feedback");
    EXPECT_EQ(answer.status, 405);
    EXPECT_EQ(answer.headers.at("Allow"), "POST");
    EXPECT_EQ(ask("").status, 404);
    EXPECT_EQ(ask("Feedback", kRequest, "/K/").status, 404);
    EXPECT_EQ(ask("Feedback", kRequest, "/K").status, 404);
}

TEST_F(InterstitialEndpointsTest, FaultsApplyByEndpointName) {
    addFault({{"endpoint", "interstitial"}, {"kind", "status"}, {"status", 503}, {"count", 1}});
    EXPECT_EQ(ask("Feedback").status, 503);
    EXPECT_EQ(ask("Feedback").status, 200);
}

}  // namespace
}  // namespace vorlane::service

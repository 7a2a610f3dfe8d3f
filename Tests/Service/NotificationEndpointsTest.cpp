#include <string>
#include <utility>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

const std::string kSplitPath = "/message/analytics";
const std::string kCancelPath = "/K/T/phash/cancel";

class NotificationEndpointsTest : public ServiceTest {
protected:
    static Value request(const Value& further = Value::object()) {
        Value body = {{"pushtext", "Good%20morning%3F"}, {"responsetype", "json"}, {"trackingid", "T"}, {"phash", ""}};
        body.update(further);
        return body;
    }

    ServiceAnswer ask(const Value& further = Value::object()) const {
        return client().postJSON(kSplitPath, request(further));
    }

    void setCampaign(const std::string& token, const Value& campaign) const {
        expectOK(client().put("/_admin/campaigns/" + token, campaign));
    }

    void expectRefused(const std::string& key, const Value& value, const std::string& text) const {
        expectError(ask({{key, value}}), 400, text);
    }

    ServiceAnswer cancel(const Value& records) const {
        return client().postJSON(kCancelPath, {{"cancellations", records}});
    }
};

TEST_F(NotificationEndpointsTest, WithoutACampaignTheTextIsReturnedWithAPhash) {
    const auto answer = ask();
    EXPECT_EQ(answer.status, 200);
    const auto json = answer.json();
    EXPECT_EQ(json, Value({{"phash", json["phash"]}, {"messagetext", "Good%20morning%3F"}}));
    EXPECT_EQ(json["phash"].get<std::string>().size(), 36u);
}

TEST_F(NotificationEndpointsTest, EveryPhashIsDifferent) { EXPECT_NE(ask().json()["phash"], ask().json()["phash"]); }

TEST_F(NotificationEndpointsTest, CampaignsSetTheTextAndTheirIdentifiers) {
    setCampaign(
        "morning",
        {{"campaignId", 17},
         {"templateId", "t"},
         {"splits", {{{"splitId", "a"}, {"messageText", "Hi, it's 50 % off \xE2\x98\x80"}, {"sound", "bell"}}}}});
    const auto json = ask({{"campaigntoken", "morning"}}).json();
    EXPECT_EQ(json, Value({{"phash", json["phash"]},
                           {"messagetext", "Hi%2C%20it's%2050%20%25%20off%20%E2%98%80"},
                           {"messagecontent", "%7B%22sound%22%3A%22bell%22%7D"},
                           {"campaignid", 17},
                           {"templateid", "t"},
                           {"splitid", "a"}}));
}

TEST_F(NotificationEndpointsTest, TextsOfACampaignTakeTurns) {
    setCampaign("c", {{"splits", {{{"splitId", 1}, {"messageText", "one"}}, {{"splitId", 2}}}}});
    setCampaign("d", {{"splits", {{{"messageText", "other"}}}}});
    const auto next = [this] { return ask({{"campaigntoken", "c"}}).json(); };
    EXPECT_EQ(next()["messagetext"], "one");
    EXPECT_EQ(ask({{"campaigntoken", "d"}}).json()["messagetext"], "other");
    const auto second = next();
    EXPECT_EQ(second["messagetext"], "Good%20morning%3F") << "a split without a text leaves it";
    EXPECT_EQ(second["splitid"], 2);
    EXPECT_EQ(next()["splitid"], 1);
}

TEST_F(NotificationEndpointsTest, UnknownCampaignsHaveNoEffect) {
    const auto json = ask({{"campaigntoken", "unknown"}}).json();
    EXPECT_EQ(json.size(), 2u);
    EXPECT_EQ(listOf("splits")[0]["campaignToken"], "unknown");
}

TEST_F(NotificationEndpointsTest, ExcludedUsersReceiveNoContent) {
    setCampaign("c", {{"filteredTrackingIds", {"T", "U"}}});
    const auto answer = ask({{"campaigntoken", "c"}});
    EXPECT_EQ(answer.status, 204);
    EXPECT_EQ(answer.body, "");
    EXPECT_EQ(ask({{"campaigntoken", "c"}, {"trackingid", "V"}}).status, 200);
    EXPECT_EQ(ask().status, 200) << "only of that campaign";
    EXPECT_EQ(listOf("splits")[0]["phash"], nullptr);
}

TEST_F(NotificationEndpointsTest, RequestsForSplitsAreListed) {
    setCampaign("c", {{"splits", {{{"splitId", "s"}}}}});
    const auto phash = ask({{"campaigntoken", "c"}, {"phash", "opened"}}).json()["phash"];
    ask({{"trackingid", "U"}});
    const auto all = listOf("splits");
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0], Value({{"number", 1},
                             {"time", all[0]["time"]},
                             {"trackingId", "T"},
                             {"campaignToken", "c"},
                             {"pushText", "Good morning?"},
                             {"openedPhash", "opened"},
                             {"phash", phash},
                             {"splitId", "s"},
                             {"cancelled", nullptr}}));
    EXPECT_EQ(all[1]["splitId"], nullptr);
    EXPECT_EQ(listOf("splits", "?trackingId=U"), Value::array({all[1]}));
    EXPECT_EQ(lastRecord()["endpoint"], "MDN");
    EXPECT_EQ(lastRecord()["trackingId"], "U");
}

TEST_F(NotificationEndpointsTest, IncompleteRequestsAreRefused) {
    expectRefused("pushtext", nullptr, "\"pushtext\" is missing or not a string");
    expectRefused("pushtext", "50%", "\"pushtext\" is not percent-encoded");
    expectRefused("responsetype", "xml", "\"responsetype\" is not \"json\"");
    expectRefused("campaigntoken", 5, "\"campaigntoken\" is not a string");
    expectRefused("phash", nullptr, "\"phash\" is missing or not a string");
    EXPECT_EQ(ask({{"trackingid", ""}}).status, 400);
    EXPECT_TRUE(listOf("splits").empty());
}

TEST_F(NotificationEndpointsTest, ReturnedPhashesAreRecorded) {
    const auto phash = ask().json()["phash"];
    const Value record = {{"phash", phash}, {"campaigntoken", "c"}, {"campaignid", 5}};
    expectOK(cancel({record, Value::object()}));
    const auto cancellations = listOf("cancellations");
    ASSERT_EQ(cancellations.size(), 2u);
    EXPECT_EQ(cancellations[0], Value({{"number", 1},
                                       {"time", cancellations[0]["time"]},
                                       {"appKey", "K"},
                                       {"trackingId", "T"},
                                       {"record", record}}));
    EXPECT_EQ(cancellations[1]["record"], Value::object());
    EXPECT_EQ(listOf("splits")[0]["cancelled"], cancellations[0]["time"]);
    EXPECT_EQ(listOf("cancellations", "?appKey=other"), Value::array());
    EXPECT_EQ(lastRecord()["endpoint"], "cancelPhash");
}

TEST_F(NotificationEndpointsTest, TrackingIdsWithSlashesMayCancel) {
    expectOK(client().postJSON("/K/a/b/phash/cancel", {{"cancellations", Value::array()}}));
    EXPECT_EQ(lastRecord()["trackingId"], "a/b");
}

TEST_F(NotificationEndpointsTest, InvalidCancellationsAreRefused) {
    expectError(cancel("x"), 400, "\"cancellations\" is missing or not a list");
    expectError(cancel({1}), 400, "an element of \"cancellations\" is not an object");
    EXPECT_TRUE(listOf("cancellations").empty());
}

}  // namespace
}  // namespace vorlane::service

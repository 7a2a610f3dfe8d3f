#include <string>
#include <vector>

#include "Simulator/Service/Pages/SamplePages.h"
#include "Simulator/Service/Store/Placement.h"
#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

const std::string kApp = "/_admin/interstitials/K";

class AdminInterstitialEndpointsTest : public ServiceTest {
protected:
    ServiceAnswer set(const std::string& placement, const Value& body) const {
        return client().put(kApp + "/" + placement, body);
    }

    Value list(const std::string& app = "K") const { return listOf("interstitials", "/" + app); }

    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& interstitial : list()) names.push_back(interstitial["placement"].get<std::string>());
        return names;
    }

    Value expectedSamples() const {
        Value samples = Value::array();
        for (const auto& name : {"App Open", "Feedback", "Location Prompt", "Location Settings", "Notification Prompt",
                                 "Notification Provisional Upgrade", "Notification Settings"}) {
            for (const auto& sample : samplePages()) {
                if (sample.name != name) continue;
                samples.push_back({{"placement", name},
                                   {"html", *sample.html},
                                   {"metadata", Value(sample.metadata)},
                                   {"phash", *sample.phash}});
            }
        }
        return samples;
    }
};

TEST_F(AdminInterstitialEndpointsTest, NewAppKeysListTheSamplePages) {
    EXPECT_EQ(expectedSamples().size(), 7u);
    EXPECT_EQ(list(), expectedSamples());
    EXPECT_EQ(list("another"), expectedSamples());
}

TEST_F(AdminInterstitialEndpointsTest, PlacementsAreSetAndReadBack) {
    expectOK(set("Placement%203", {{"html", "<p>"}, {"metadata", {{"a", {1}}}}, {"phash", "p"}}));
    EXPECT_EQ(client().get(kApp + "/Placement%203").json(),
              Value({{"placement", "Placement 3"}, {"html", "<p>"}, {"metadata", {{"a", {1}}}}, {"phash", "p"}}));
    EXPECT_EQ(list().size(), 8u);
    EXPECT_EQ(list("another").size(), 7u);
}

TEST_F(AdminInterstitialEndpointsTest, SamplePagesMayBeReplaced) {
    expectOK(set("Feedback", {{"html", "mine"}}));
    const Value mine = {{"placement", "Feedback"}, {"html", "mine"}, {"metadata", Value::object()}, {"phash", nullptr}};
    EXPECT_EQ(client().get(kApp + "/Feedback").json(), mine);
    auto expected = expectedSamples();
    expected[1] = mine;
    EXPECT_EQ(list(), expected);
    expectOK(set("Feedback", {{"html", "again"}, {"phash", "p"}}));
    EXPECT_EQ(client().get(kApp + "/Feedback").json()["html"], "again");
    EXPECT_EQ(list().size(), 7u);
}

TEST_F(AdminInterstitialEndpointsTest, RemovedPlacementsHaveNoContent) {
    expectOK(set("Placement%20B", {{"html", "b"}}));
    for (const std::string placement : {"Placement%20B", "App%20Open"}) {
        expectOK(client().del(kApp + "/" + placement));
        expectError(client().get(kApp + "/" + placement), 404, "the placement has no content");
        expectError(client().get(kApp + "/" + placement + "/page"), 404, "the placement has no content");
        expectError(client().del(kApp + "/" + placement), 404, "the placement has no content");
    }
    EXPECT_EQ(names(),
              (std::vector<std::string>{"Feedback", "Location Prompt", "Location Settings", "Notification Prompt",
                                        "Notification Provisional Upgrade", "Notification Settings"}));
    expectOK(set("App%20Open", {{"html", "back"}}));
    EXPECT_EQ(client().get(kApp + "/App%20Open").json()["html"], "back");
}

TEST_F(AdminInterstitialEndpointsTest, PlacementsWithoutContentAreNotFound) {
    for (const std::string placement : {"Push%20Open", "Nonsense"}) {
        expectError(client().get(kApp + "/" + placement), 404, "the placement has no content");
        expectError(client().del(kApp + "/" + placement), 404, "the placement has no content");
    }
}

TEST_F(AdminInterstitialEndpointsTest, RemovingAllPlacementsRestoresTheSamplePages) {
    expectOK(set("Feedback", {{"html", "mine"}}));
    expectOK(set("Placement%209", {{"html", "mine"}}));
    expectOK(client().del(kApp + "/App%20Open"));
    expectOK(client().put("/_admin/interstitials/L/Feedback", {{"html", "other"}}));
    expectOK(client().del(kApp));
    EXPECT_EQ(list(), expectedSamples());
    EXPECT_EQ(client().get("/_admin/interstitials/L/Feedback").json()["html"], "other");
}

TEST_F(AdminInterstitialEndpointsTest, ResetRestoresTheSamplePages) {
    expectOK(set("Feedback", {{"html", "mine"}}));
    expectOK(client().post("/_admin/reset", "", "text/plain"));
    EXPECT_EQ(list(), expectedSamples());
}

TEST_F(AdminInterstitialEndpointsTest, PagesAreServedUnchanged) {
    expectOK(set("Feedback", {{"html", "<p>\xC3\xA9 %41"}}));
    const auto answer = client().get(kApp + "/Feedback/page");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.headers.at("Content-Type"), "text/html; charset=utf-8");
    EXPECT_EQ(answer.body, "<p>\xC3\xA9 %41");
}

TEST_F(AdminInterstitialEndpointsTest, UnknownPlacementsAreRefused) {
    const Value body = {{"html", "x"}};
    expectError(set("Placement%200", body), 400, "there is no placement \"Placement 0\"");
    expectError(set("app%20open", body), 400, "there is no placement \"app open\"");
    for (const std::string name : {"Placement%2010", "Placement%20a", "Placement%20", "Placement", "Placement%20AA",
                                   "Placement%20%5B", "Placement%20@", "Placement%20:", "App%20Open%20", "%00"})
        EXPECT_EQ(set(name, body).status, 400) << name;
    EXPECT_EQ(list(), expectedSamples());
}

TEST_F(AdminInterstitialEndpointsTest, InvalidPlacementsAreRefusedWithoutEffect) {
    const std::string noPage = "\"html\" is missing, empty or not a string";
    expectError(set("Feedback", Value::object()), 400, noPage);
    expectError(set("Feedback", {{"html", ""}}), 400, noPage);
    expectError(set("Feedback", {{"html", nullptr}}), 400, noPage);
    expectError(set("Feedback", {{"html", {"x"}}}), 400, noPage);
    expectError(set("Feedback", {{"html", "x"}, {"metadata", "dark"}}), 400, "\"metadata\" is not an object");
    expectError(set("Feedback", {{"html", "x"}, {"metadata", {{"html", "y"}}}}), 400, "\"metadata\" has \"html\"");
    expectError(set("Feedback", {{"html", "x"}, {"phash", ""}}), 400, "\"phash\" is missing, empty or not a string");
    expectError(set("Feedback", {{"html", "x"}, {"phash", 5}}), 400, "\"phash\" is missing, empty or not a string");
    expectError(set("Feedback", {{"html", "x"}, {"pHash", "p"}}), 400, "unknown name \"pHash\"");
    EXPECT_EQ(set("Feedback", Value::array()).status, 400);
    EXPECT_EQ(list(), expectedSamples());
}

TEST_F(AdminInterstitialEndpointsTest, AdminRequestsForPlacementsAreNotRecorded) {
    set("Feedback", {{"html", "x"}});
    client().get(kApp + "/Feedback/page");
    list();
    client().del(kApp);
    EXPECT_EQ(listOf("requests"), Value::array());
}

TEST(PlacementTest, EveryRequestedNameIsAPlacement) {
    std::vector<std::string> names{"App Open",
                                   "Feedback",
                                   "Push Open",
                                   "Store Launch",
                                   "Notification Prompt",
                                   "Notification Settings",
                                   "Notification Provisional Upgrade",
                                   "Location Prompt",
                                   "Location Settings"};
    for (char last = '1'; last <= '9'; ++last) names.push_back(std::string("Placement ") + last);
    for (char last = 'A'; last <= 'Z'; ++last) names.push_back(std::string("Placement ") + last);
    EXPECT_EQ(names.size(), 44u);
    for (const auto& name : names) EXPECT_TRUE(Placement::isName(name)) << name;
    EXPECT_FALSE(Placement::isName(""));
}

}  // namespace
}  // namespace vorlane::service

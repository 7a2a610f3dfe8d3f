#include <string>
#include <vector>

#include "Tests/EndToEnd/InterstitialEndToEndTest.h"

namespace vorlane {

namespace {

class AppOpenInterstitialTest : public InterstitialEndToEndTest {
protected:
    AppOpenInterstitialTest() { startPhone(); }

    void open(const std::string& viewController = "interstitialWithMetadata") {
        launchWithAppOpenInterstitial(viewController);
        phone->settle();
        state("active");
        phone->settle();
    }

    Value setPage(const std::string& placement, const std::string& html, const std::string& phash) {
        return service.put(interstitial(placement),
                           Dictionary{{"html", html}, {"metadata", Dictionary{{"theme", "dark"}}}, {"phash", phash}});
    }
};

TEST_F(AppOpenInterstitialTest, OpeningShowsThePageWithMetadataAndPhash) {
    setPage("App%20Open", "<h1>H\xC3\xA9llo \"you\" 100 %</h1>", "open-1");
    open();
    auto shown = lastInterstitial();
    const auto metadata = shown["metadata"];
    EXPECT_EQ(metadata["theme"], Value("dark"));
    EXPECT_EQ(metadata.size(), 2U);
    EXPECT_TRUE(metadata["html"].is_string());
    EXPECT_EQ(Value(shown),
              Value(Dictionary{{"event", "interstitial"},
                               {"htmlContent", std::string(kViewportTag) + "<h1>H\xC3\xA9llo \"you\" 100 %</h1>"},
                               {"phash", "open-1"},
                               {"metadata", metadata},
                               {"animated", true},
                               {"modalTransitionStyle", 2},
                               {"modalPresentationStyle", 6}}));
    EXPECT_EQ(countEvents("interstitial"), 1U);
    EXPECT_EQ(query("presented"), Value(Array{"plain", "interstitialWithMetadata"}));
}

TEST_F(AppOpenInterstitialTest, RequestNamesUserAndPlacement) {
    open();
    const auto requests = service.requests("interstitial");
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0]["method"], Value("POST"));
    EXPECT_EQ(requests[0]["appKey"], Value(appKey()));
    EXPECT_EQ(requests[0]["trackingId"], phone->call("trackingId"));
    auto payload = requests[0]["payload"];
    EXPECT_EQ(payload["getContent"], Value(true));
    EXPECT_TRUE(payload["interstitial"]["timezone"].is_string());
    EXPECT_EQ(payload["interstitial"].size(), 1U);
    EXPECT_TRUE(payload["sid"].is_string());
    EXPECT_TRUE(payload["deviceData"].is_object());
    EXPECT_EQ(requestedPlacements(), std::vector<std::string>{"App%20Open"});
}

TEST_F(AppOpenInterstitialTest, ShowsTheSamplePageByDefault) {
    open();
    const auto sample = service.get(interstitial("App%20Open"));
    EXPECT_EQ(lastInterstitial()["htmlContent"], Value(kViewportTag + sample["html"].get<std::string>()));
    EXPECT_EQ(lastInterstitial()["phash"], sample["phash"]);
    EXPECT_EQ(lastInterstitial()["metadata"]["title"], sample["metadata"]["title"]);
}

TEST_F(AppOpenInterstitialTest, ViewControllersMayIgnoreMetadata) {
    open("interstitial");
    EXPECT_EQ(countEvents("interstitial"), 1U);
    EXPECT_TRUE(lastInterstitial()["metadata"].is_null());
    EXPECT_EQ(query("presented"), Value(Array{"plain", "interstitial"}));
}

TEST_F(AppOpenInterstitialTest, OpenedNotificationsAreNotCovered) {
    launchWithAppOpenInterstitial("interstitial");
    phone->perform({{"do", "push"}, {"payload", Dictionary{{"p", "h"}, {"aps", Dictionary{{"alert", "Hi"}}}}}});
    state("active");
    phone->settle();
    EXPECT_EQ(countEvents("interstitial"), 0U);
    EXPECT_TRUE(service.requests("interstitial").empty());
    EXPECT_EQ(lastPayload("sessionStart")["phash"], Value("h"));
    // The next opening is not caused by a notification.
    state("background");
    state("active");
    phone->settle();
    EXPECT_EQ(countEvents("interstitial"), 1U);
}

TEST_F(AppOpenInterstitialTest, ASecondInterstitialIsSkippedWhileTheFirstShows) {
    setPage("Feedback", "<p>How is it?</p>", "feedback-1");
    open();
    EXPECT_EQ(present(1), Value(Array{false, nullptr}));
    EXPECT_EQ(countEvents("interstitial"), 1U);
    EXPECT_EQ(countLog("Interstitial: is already being displayed. Skipping display of interstitial with phash: "
                       "feedback-1"),
              1);
    // Its content was fetched nevertheless.
    EXPECT_EQ(requestedPlacements(), (std::vector<std::string>{"App%20Open", "Feedback"}));
}

TEST_F(AppOpenInterstitialTest, TheNextInterstitialShowsAfterADismissal) {
    setPage("Feedback", "<p>How is it?</p>", "feedback-1");
    open();
    dismiss();
    EXPECT_EQ(query("presented"), Value(Array{"plain"}));
    EXPECT_EQ(present(1), Value(Array{true, nullptr}));
    EXPECT_EQ(lastInterstitial()["phash"], Value("feedback-1"));
    EXPECT_EQ(query("presented"), Value(Array{"plain", "interstitial"}));
}

TEST_F(AppOpenInterstitialTest, OneOfTwoRacingInterstitialsIsShown) {
    launch();
    phone->settle();
    phone->takeEvents();
    for (const auto placement : {0, 1}) {
        phone->call("presentInterstitialWithPlacement:viewController:animated:completionHandler:",
                    {placement, "interstitial", false});
    }
    phone->settle();
    const auto results = phone->events("result");
    ASSERT_EQ(results.size(), 2U);
    EXPECT_NE(results[0].at("values"), results[1].at("values"));
    for (const auto& result : results) {
        EXPECT_EQ(result.at("values")[1], Value()) << result.at("values");
        EXPECT_EQ(result.at("main"), Value(true));
    }
    ASSERT_EQ(countEvents("interstitial"), 1U);
    EXPECT_EQ(lastInterstitial()["animated"], Value(false));
    EXPECT_EQ(countLog("Interstitial: is already being displayed."), 1);
}

TEST_F(AppOpenInterstitialTest, ShowsAgainAfterTheBackground) {
    open();
    dismiss();
    state("inactive");
    state("active");
    phone->settle();
    EXPECT_EQ(countEvents("interstitial"), 1U);
    state("background");
    state("foreground");
    state("active");
    phone->settle();
    EXPECT_EQ(countEvents("interstitial"), 2U);
}

TEST_F(AppOpenInterstitialTest, PlacementsWithoutContentShowNoInterstitial) {
    service.remove(interstitial("App%20Open"));
    open();
    EXPECT_EQ(countEvents("interstitial"), 0U);
    EXPECT_EQ(countLog("No interstitial message content found for this tracking id."), 1);
    EXPECT_EQ(present(12), Value(Array{false, nullptr}));
    EXPECT_EQ(present(38), Value(Array{false, nullptr}));
    EXPECT_EQ(requestedPlacements(), (std::vector<std::string>{"App%20Open", "Placement%209", "Placement%20Z"}));
}

TEST_F(AppOpenInterstitialTest, BrokenAnswersAreErrors) {
    launch();
    phone->settle();
    service.post("faults", Dictionary{{"endpoint", "interstitial"},
                                      {"kind", "body"},
                                      {"body", R"({"message":{"messagecontent":"%7Bbroken","phash":"p"}})"}});
    const auto result = present(0);
    EXPECT_EQ(result[0], Value(false));
    EXPECT_TRUE(result[1].is_object());
    EXPECT_EQ(countLog("Cannot display interstitial because its HTML content was corrupted."), 1);
    EXPECT_EQ(countEvents("interstitial"), 0U);
}

TEST_F(AppOpenInterstitialTest, FailedFetchesAreErrors) {
    launch();
    phone->settle();
    service.post("faults", Dictionary{{"endpoint", "interstitial"}, {"kind", "status"}, {"status", 503}, {"count", 1}});
    const auto result = present(0);
    EXPECT_EQ(result[0], Value(false));
    EXPECT_EQ(result[1]["domain"], Value("vorlane.sdk.network"));
    EXPECT_EQ(result[1]["code"], Value(503));
    EXPECT_EQ(countLog("Interstitial: request failed with error: "), 1);
    EXPECT_EQ(present(0), Value(Array{true, nullptr}));
}

TEST_F(AppOpenInterstitialTest, UnsuitableViewControllersAreNotPresented) {
    launch();
    phone->settle();
    for (const auto* viewController : {"plainViewController", "notAViewController"}) {
        const auto result = present(0, viewController);
        EXPECT_EQ(result[0], Value(false));
        EXPECT_EQ(result[1]["domain"], Value("vorlane.sdk.interstitial"));
        EXPECT_EQ(result[1]["code"], Value(2));
    }
    EXPECT_EQ(present(39)[1]["code"], Value(0));
    EXPECT_TRUE(service.requests("interstitial").empty());
}

TEST_F(AppOpenInterstitialTest, WithoutAWindowNoInterstitialIsShown) {
    launch();
    phone->settle();
    phone->perform({{"do", "viewControllers"}, {"chain", Array{}}});
    EXPECT_EQ(present(0)[0], Value(false));
    EXPECT_EQ(countEvents("interstitial"), 0U);
}

}  // namespace

}  // namespace vorlane

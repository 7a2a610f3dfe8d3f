#include "Notifications/VLInterstitialService.h"

#include <gtest/gtest.h>

#include <utility>

#include "Platform/NSNotificationCenter.h"
#include "Platform/UIAlertController.h"
#include "Platform/UINavigationController.h"
#include "Public/VLConstants.h"
#include "Tests/Notifications/InterstitialsTest.h"

namespace vorlane {

namespace {

const std::string kPage = "<p>100% caf\u00e9 & \"more\"</p>";

class VLInterstitialServiceTest : public InterstitialsTest {
protected:
    void dismiss() { phone().notificationCenter()->postNotificationName(VLNotificationInterstitialWasDismissed); }

    Outcome outcome;
};

TEST_F(VLInterstitialServiceTest, WithoutAViewControllerNothingIsRequested) {
    ask(nullptr, outcome);
    expectError(outcome, "vorlane.sdk.interstitial", 1);
    EXPECT_EQ(outcome.error->localizedDescription(), "The view controller supplied was nil");
    EXPECT_EQ(log().count("Supplied interstitial view controller was nil - not displaying interstitial for placement "
                          "Feedback: Error Domain=vorlane.sdk.interstitial Code=1 \"The view controller supplied was "
                          "nil\"",
                          VLLogLevel::Error),
              1);
    EXPECT_TRUE(session().requests().empty());
}

TEST_F(VLInterstitialServiceTest, ANonViewControllerIsRefused) {
    class Model : public NSObject {};
    ask(std::make_shared<Model>(), outcome);
    expectError(outcome, "vorlane.sdk.interstitial", 2);
    const std::string description =
        "Interstitial view controller object of type Model is not a subclass of UIViewController";
    EXPECT_EQ(outcome.error->localizedDescription(), description);
    EXPECT_EQ(log().count("Failed to present interstitial with placement Feedback: Error "
                          "Domain=vorlane.sdk.interstitial Code=2 \"" +
                              description + "\"",
                          VLLogLevel::Error),
              1);
    EXPECT_TRUE(session().requests().empty());
}

TEST_F(VLInterstitialServiceTest, AnUnrelatedViewControllerIsRefused) {
    class SettingsScreen : public UIViewController {};
    ask(std::make_shared<SettingsScreen>(), outcome);
    expectError(outcome, "vorlane.sdk.interstitial", 2);
    const std::string description =
        "Interstitial view controller object of type SettingsScreen does not conform to VLInterstitialViewController "
        "protocol";
    EXPECT_EQ(outcome.error->localizedDescription(), description);
    EXPECT_EQ(log().count("Failed to present interstitial with placement Feedback: Error "
                          "Domain=vorlane.sdk.interstitial Code=2 \"" +
                              description + "\"",
                          VLLogLevel::Error),
              1);
    EXPECT_TRUE(session().requests().empty());
}

TEST_F(VLInterstitialServiceTest, TheRequestHoldsTimeZoneSessionAndDevice) {
    phone().simulatedDevice().setLocalTimeZone({"Asia/Kolkata", 19800});
    ask(makeInterstitial(), outcome, "Placement A");
    const auto sent = session().lastRequest("/interstitial/");
    EXPECT_EQ(sent.request.HTTPMethod, "POST");
    EXPECT_EQ(sent.request.URL, urlBuilder->interstitialURLWithPlacement("Placement A"));
    EXPECT_TRUE(sent.request.URL.absoluteString().ends_with("/K/T/interstitial/Placement%20A"));
    EXPECT_EQ(sent.header("Content-Type"), "application/json");
    EXPECT_EQ(sent.payload(), Value(Dictionary{{"getContent", true},
                                               {"interstitial", Dictionary{{"timezone", "+330"}}},
                                               {"sid", settings->sessionId()},
                                               {"deviceData", Dictionary{{"language", "en-GB"},
                                                                         {"platform", "iOS"},
                                                                         {"os_name", "iOS"},
                                                                         {"os_version", "12.0"},
                                                                         {"manufacturer", "Apple"},
                                                                         {"type", "Simulated1,1"},
                                                                         {"timezone", "+330"}}}}));
}

TEST_F(VLInterstitialServiceTest, AFailedRequestIsReportedAndLogged) {
    ask(makeInterstitial(), outcome);
    session().fail("/interstitial/", NSURLError::TimedOut);
    phone().settle();
    expectError(outcome, NSURLErrorDomain, static_cast<std::int64_t>(NSURLError::TimedOut));
    EXPECT_EQ(
        log().count("Interstitial: request failed with error: " + outcome.error->description(), VLLogLevel::Error), 1);
    EXPECT_EQ(session().requests("/interstitial/").size(), 1U);
}

TEST_F(VLInterstitialServiceTest, AnErrorStatusIsAFailedRequest) {
    ask(makeInterstitial(), outcome);
    answer("gone", 404);
    expectError(outcome, VLErrorDomainNetwork, 404);
}

TEST_F(VLInterstitialServiceTest, ThePageCoversTheRootOfTheKeyWindow) {
    const auto interstitial = makeInterstitial();
    expectPresented(shown(interstitial, answerWithPage(kPage, "ph-7")));
    EXPECT_EQ(root()->presentedViewController(), interstitial);
    EXPECT_EQ(service->displayedInterstitialController(), interstitial);
    EXPECT_EQ(interstitial->htmlContent(), VIEWPORT_META_TAG + kPage);
    EXPECT_EQ(interstitial->phash(), "ph-7");
    EXPECT_EQ(interstitial->modalTransitionStyle(), UIModalTransitionStyle::CrossDissolve);
    EXPECT_EQ(interstitial->modalPresentationStyle(), UIModalPresentationStyle::OverCurrentContext);
    EXPECT_EQ(interstitial->loadedPages(), std::vector<std::string>{VIEWPORT_META_TAG + kPage});
    EXPECT_EQ(interstitial->baseURLs(), std::vector<std::optional<NSURL>>{std::nullopt});
    EXPECT_EQ(interstitial->appearances(), 1);
    EXPECT_TRUE(interstitial->wasAnimated());
}

TEST_F(VLInterstitialServiceTest, TheCallerChoosesTheAnimation) {
    const auto interstitial = makeInterstitial();
    service->presentInterstitialWithPlacementString("Feedback", interstitial, false, keepIn(outcome));
    phone().settle();
    answer(answerWithPage(kPage));
    expectPresented(outcome);
    EXPECT_FALSE(interstitial->wasAnimated());
}

TEST_F(VLInterstitialServiceTest, TheHandlerRunsAfterThePresentation) {
    const auto interstitial = makeInterstitial();
    int appearances = -1;
    service->presentInterstitialWithPlacementString(
        "Feedback", interstitial, true, [&](bool, const auto&) { appearances = interstitial->appearances(); });
    phone().settle();
    answer(answerWithPage(kPage));
    EXPECT_EQ(appearances, 1);
}

TEST_F(VLInterstitialServiceTest, NothingHappensInsideTheCall) {
    service->presentInterstitialWithPlacementString("Feedback", nullptr, true, keepIn(outcome));
    service->presentInterstitialWithPlacementString("Feedback", makeInterstitial(), true, keepIn(outcome));
    EXPECT_EQ(outcome.calls, 0);
    EXPECT_TRUE(session().requests().empty());
}

TEST_F(VLInterstitialServiceTest, TheHandlerMayBeEmpty) {
    const auto interstitial = makeInterstitial();
    service->presentInterstitialWithPlacementString("Feedback", nullptr, true, nullptr);
    service->presentInterstitialWithPlacement(static_cast<VLInterstitialPlacement>(39), nullptr, true, nullptr);
    for (const auto& body :
         {std::string("{}"), answerWithContent("no"), answerWithPage(kPage), answerWithPage(kPage)}) {
        service->presentInterstitialWithPlacementString("Feedback", interstitial, true, nullptr);
        phone().settle();
        answer(body);
    }
    service->presentInterstitialWithPlacementString("Feedback", interstitial, true, nullptr);
    phone().settle();
    session().fail("/interstitial/");
    phone().settle();
    EXPECT_EQ(root()->presentedViewController(), interstitial);
}

TEST_F(VLInterstitialServiceTest, MetadataIsTheWholeContent) {
    const auto interstitial = makeInterstitial(Interstitial::Metadata::Taken);
    expectPresented(shown(interstitial, answerWithContent(R"({"html":"%3Cp%3E","colour":"#fff","n":{"a":[1,null]}})")));
    Dictionary expected{{"html", "%3Cp%3E"}, {"colour", "#fff"}};
    expected["n"] = Dictionary{{"a", Array{1, nullptr}}};
    EXPECT_EQ(interstitial->metadata(), expected);
    EXPECT_EQ(interstitial->htmlContent(), VIEWPORT_META_TAG + std::string("<p>"));
}

TEST_F(VLInterstitialServiceTest, MetadataAndTheWebViewAreOptional) {
    class Bare : public UIViewController, public VLInterstitialViewController {
    public:
        std::string htmlContent() const override { return page; }
        void setHtmlContent(const std::string& htmlContent) override { page = htmlContent; }
        std::optional<std::string> phash() const override { return std::nullopt; }
        void setPhash(const std::optional<std::string>& /*phash*/) override {}
        std::shared_ptr<UIWebView> webView() const override { return nullptr; }
        std::string page;
    };
    const auto bare = std::make_shared<Bare>();
    expectPresented(shown(bare, answerWithPage(kPage)));
    EXPECT_EQ(bare->page, VIEWPORT_META_TAG + kPage);
    EXPECT_EQ(root()->presentedViewController(), bare);
}

TEST_F(VLInterstitialServiceTest, ThePageCoversTheTopmostScreen) {
    const auto navigation = std::make_shared<UINavigationController>();
    const auto inner = std::make_shared<UIViewController>();
    navigation->pushViewController(inner, false);
    root()->presentViewController(navigation, false, nullptr);
    const auto interstitial = makeInterstitial();
    expectPresented(shown(interstitial, answerWithPage(kPage)));
    EXPECT_EQ(inner->presentedViewController(), interstitial);
}

TEST_F(VLInterstitialServiceTest, AnAlertStaysInFrontOfTheInterstitial) {
    const auto alert = std::make_shared<UIAlertController>();
    root()->presentViewController(alert, false, nullptr);
    const auto interstitial = makeInterstitial();
    expectPresented(shown(interstitial, answerWithPage(kPage)));
    EXPECT_EQ(root()->presentedViewController(), interstitial);
    EXPECT_EQ(interstitial->presentedViewController(), alert);
}

TEST_F(VLInterstitialServiceTest, WithoutAWindowTheNextMayTry) {
    const auto interstitial = makeInterstitial();
    application().setKeyWindow(nullptr);
    expectNothing(shown(interstitial, answerWithPage(kPage)));
    EXPECT_EQ(interstitial->appearances(), 0);
    EXPECT_TRUE(interstitial->loadedPages().empty());
    EXPECT_EQ(service->displayedInterstitialController(), nullptr);

    application().setKeyWindow(std::make_shared<UIWindow>(nullptr));
    expectNothing(shown(interstitial, answerWithPage(kPage)));
    application().setKeyWindow(std::make_shared<UIWindow>(std::make_shared<UINavigationController>()));
    expectNothing(shown(interstitial, answerWithPage(kPage)));
    application().setKeyWindow(std::make_shared<UIWindow>(std::make_shared<UIViewController>()));
    expectPresented(shown(interstitial, answerWithPage(kPage)));
}

TEST_F(VLInterstitialServiceTest, AControllerPlacedByTheHostIsNotPresented) {
    const auto atTheBottom = makeInterstitial();
    application().setKeyWindow(std::make_shared<UIWindow>(atTheBottom));
    expectNothing(shown(atTheBottom, answerWithPage(kPage)));

    const auto navigation = std::make_shared<UINavigationController>();
    const auto inAStack = makeInterstitial();
    navigation->pushViewController(inAStack, false);
    application().setKeyWindow(std::make_shared<UIWindow>(navigation));
    expectNothing(shown(inAStack, answerWithPage(kPage)));
    EXPECT_TRUE(inAStack->loadedPages().empty());
    EXPECT_EQ(service->displayedInterstitialController(), nullptr);
}

TEST_F(VLInterstitialServiceTest, ADismissalMayBePostedOnAnyThread) {
    const auto interstitial = makeInterstitial();
    shown(interstitial, answerWithPage("one"));
    const auto elsewhere = phone().makeSerialQueue("elsewhere");
    elsewhere->post([center = phone().notificationCenter()] {
        center->postNotificationName(VLNotificationInterstitialWasDismissed);
    });
    phone().settle();
    EXPECT_EQ(service->displayedInterstitialController(), nullptr);
}

TEST_F(VLInterstitialServiceTest, ASecondInterstitialIsFetchedAndSkipped) {
    const auto first = makeInterstitial();
    const auto second = makeInterstitial();
    expectPresented(shown(first, answerWithPage("one", "ph-1")));
    expectNothing(shown(second, answerWithPage("two", "ph-2")));
    EXPECT_EQ(session().requests("/interstitial/").size(), 2U);
    EXPECT_EQ(second->htmlContent(), VIEWPORT_META_TAG + std::string("two"));
    EXPECT_EQ(second->appearances(), 0);
    EXPECT_EQ(root()->presentedViewController(), first);
    EXPECT_EQ(log().count("Interstitial: is already being displayed. Skipping display of interstitial with phash: ph-2",
                          VLLogLevel::Info),
              1);
}

TEST_F(VLInterstitialServiceTest, TheInterstitialAnsweredFirstIsShown) {
    const auto first = makeInterstitial();
    const auto second = makeInterstitial();
    Outcome firstOutcome;
    Outcome secondOutcome;
    ask(first, firstOutcome, "Feedback");
    ask(second, secondOutcome, "Push Open");
    session().answer(pathOf("Push Open"), 200, answerWithPage("two", "ph-2"));
    session().answer(pathOf("Feedback"), 200, answerWithPage("one", "ph-1"));
    phone().settle();
    expectPresented(secondOutcome);
    expectNothing(firstOutcome);
    EXPECT_EQ(root()->presentedViewController(), second);
    EXPECT_EQ(second->presentedViewController(), nullptr);
    EXPECT_EQ(first->appearances(), 0);
    EXPECT_EQ(log().linesContaining("Skipping display of interstitial with phash: ph-1").size(), 1U);
}

TEST_F(VLInterstitialServiceTest, ADismissalMakesRoomForTheNext) {
    const auto first = makeInterstitial();
    const auto second = makeInterstitial();
    shown(first, answerWithPage("one"));
    first->close();
    EXPECT_EQ(service->displayedInterstitialController(), nullptr);
    expectPresented(shown(second, answerWithPage("two")));
    EXPECT_EQ(root()->presentedViewController(), second);
}

TEST_F(VLInterstitialServiceTest, TheSameControllerMayBeShownAgain) {
    const auto interstitial = makeInterstitial();
    for (int i = 1; i <= 2; ++i) {
        expectPresented(shown(interstitial, answerWithPage("page")));
        EXPECT_EQ(interstitial->appearances(), i);
        interstitial->close();
    }
    EXPECT_EQ(interstitial->loadedPages().size(), 2U);
}

TEST_F(VLInterstitialServiceTest, APrematureDismissalKeepsTheControllerInPlace) {
    const auto interstitial = makeInterstitial();
    shown(interstitial, answerWithPage("one"));
    dismiss();
    expectPresented(shown(interstitial, answerWithPage("two")));
    EXPECT_EQ(root()->presentedViewController(), interstitial);
    EXPECT_EQ(interstitial->presentedViewController(), nullptr);
    EXPECT_EQ(interstitial->loadedPages().back(), VIEWPORT_META_TAG + std::string("two"));
}

TEST_F(VLInterstitialServiceTest, ADismissalOnAnEmptyScreenIsHarmless) {
    dismiss();
    expectPresented(shown(makeInterstitial(), answerWithPage(kPage)));
}

TEST_F(VLInterstitialServiceTest, ADestroyedControllerMakesRoomForTheNext) {
    auto interstitial = makeInterstitial();
    const std::weak_ptr<Interstitial> seen = interstitial;
    shown(interstitial, answerWithPage("one"));
    interstitial.reset();
    phone().settle();
    ASSERT_FALSE(seen.expired());
    // The host destroys its view controllers.
    application().setKeyWindow(std::make_shared<UIWindow>(std::make_shared<UIViewController>()));
    EXPECT_TRUE(seen.expired());
    EXPECT_EQ(service->displayedInterstitialController(), nullptr);
    const auto next = makeInterstitial();
    expectPresented(shown(next, answerWithPage("two")));
}

TEST_F(VLInterstitialServiceTest, AKeptControllerCountsAsShownUntilDismissed) {
    const auto interstitial = makeInterstitial();
    shown(interstitial, answerWithPage("one"));
    application().setKeyWindow(std::make_shared<UIWindow>(std::make_shared<UIViewController>()));
    expectNothing(shown(makeInterstitial(), answerWithPage("two")));
    dismiss();
    expectPresented(shown(makeInterstitial(), answerWithPage("two")));
}

TEST_F(VLInterstitialServiceTest, AControllerIsReleasedOnTheMainQueue) {
    class Leaving : public Interstitial {
    public:
        explicit Leaving(bool& wasOnMainQueue) : wasOnMainQueue_(wasOnMainQueue) {}
        ~Leaving() override { wasOnMainQueue_ = Platform::current().mainQueue()->isCurrent(); }

    private:
        bool& wasOnMainQueue_;
    };
    for (const bool isAnswered : {true, false}) {
        bool wasOnMainQueue = false;
        ask(std::make_shared<Leaving>(wasOnMainQueue), outcome);
        if (isAnswered) {
            session().answer("/interstitial/", 200, "{}");
        } else {
            session().fail("/interstitial/");
        }
        phone().settle();
        EXPECT_TRUE(wasOnMainQueue) << isAnswered;
    }
}

TEST_F(VLInterstitialServiceTest, ADestroyedServiceFinishesItsRequest) {
    const auto interstitial = makeInterstitial();
    ask(interstitial, outcome);
    service.reset();
    answer(answerWithPage(kPage));
    expectPresented(outcome);
    interstitial->close();
}

TEST_F(VLInterstitialServiceTest, AControllerMayBePartOfAnotherObject) {
    struct Screens {
        UIViewController root;
        Interstitial interstitial;
    };
    const auto screens = std::make_shared<Screens>();
    const std::shared_ptr<UIViewController> part(screens, &screens->root);
    const std::shared_ptr<Interstitial> interstitial(screens, &screens->interstitial);
    application().setKeyWindow(std::make_shared<UIWindow>(part));
    expectPresented(shown(interstitial, answerWithPage(kPage)));
    EXPECT_EQ(part->presentedViewController(), interstitial);
    // They keep each other alive, as in a host.
    part->dismissViewControllerAnimated(false, nullptr);
}

TEST_F(VLInterstitialServiceTest, AResponseForAnUnsuitableObjectIsIgnored) {
    service->handlePlacementResponse(Dictionary{{"message", Dictionary{{"messagecontent", "%7B%7D"}}}},
                                     std::make_shared<UIViewController>(), true, keepIn(outcome));
    EXPECT_EQ(outcome.calls, 0);
    phone().settle();
    expectNothing(outcome);
}

}  // namespace

}  // namespace vorlane

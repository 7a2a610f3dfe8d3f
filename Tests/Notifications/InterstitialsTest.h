#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Notifications/VLInterstitialService.h"
#include "Platform/UIWindow.h"
#include "Simulator/Platform/SimulatedInterstitialViewController.h"
#include "Tests/Notifications/NotificationsTest.h"

namespace vorlane {

/// Provides an interstitial service and the answers of the server to it.
class InterstitialsTest : public NotificationsTest {
protected:
    explicit InterstitialsTest(SimulatedPhone::Options options = {}) : NotificationsTest(std::move(options)) {}

    using Interstitial = SimulatedInterstitialViewController;

    static std::shared_ptr<Interstitial> makeInterstitial(
        Interstitial::Metadata metadata = Interstitial::Metadata::Ignored) {
        return std::make_shared<Interstitial>(metadata);
    }

    static std::string encoded(const std::string& text) {
        return stringByAddingPercentEncoding(text, alphanumericCharacterSet());
    }

    /// An answer with the given content, encoded like that of the server.
    static std::string answerWithContent(const std::string& content, const std::string& phash = "ph-1") {
        return Value(Dictionary{{"message", Dictionary{{"messagecontent", encoded(content)}, {"phash", phash}}}})
            .dump();
    }
    /// An answer with the given page, which is encoded once more within the content.
    static std::string answerWithPage(const std::string& html, const std::string& phash = "ph-1") {
        return answerWithContent(Value(Dictionary{{"html", encoded(html)}, {"colour", "#fff"}}).dump(), phash);
    }

    static std::string pathOf(const std::string& placement) {
        return "/interstitial/" + stringByAddingPercentEncoding(placement, vl_URIComponentAllowedCharacterSet());
    }

    /// What a handler received.
    struct Outcome {
        int calls = 0;
        bool presented = false;
        std::optional<NSError> error = std::nullopt;
    };
    VLInterstitialService::Handler keepIn(Outcome& outcome) {
        return [this, &outcome](bool presented, std::optional<NSError> error) {
            EXPECT_TRUE(phone().mainQueue()->isCurrent());
            outcome = {outcome.calls + 1, presented, std::move(error)};
        };
    }

    /// Asks for a placement and sends the request.
    void ask(const std::shared_ptr<NSObject>& viewController, Outcome& outcome,
             const std::string& placement = "Feedback") {
        service->presentInterstitialWithPlacementString(placement, viewController, true, keepIn(outcome));
        phone().settle();
    }
    void answer(const std::string& body, std::int64_t status = 200) {
        session().answer("/interstitial/", status, body);
        phone().settle();
    }
    /// Asks for a placement and answers the request.
    Outcome shown(const std::shared_ptr<NSObject>& viewController, const std::string& body) {
        Outcome outcome;
        ask(viewController, outcome);
        answer(body);
        return outcome;
    }

    std::shared_ptr<UIViewController> root() { return application().keyWindow()->rootViewController(); }

    static void expectPresented(const Outcome& outcome) {
        EXPECT_EQ(outcome.calls, 1);
        EXPECT_TRUE(outcome.presented);
        EXPECT_EQ(outcome.error, std::nullopt);
    }
    static void expectNothing(const Outcome& outcome) {
        EXPECT_EQ(outcome.calls, 1);
        EXPECT_FALSE(outcome.presented);
        EXPECT_EQ(outcome.error, std::nullopt);
    }
    static void expectError(const Outcome& outcome, const std::string& domain, std::int64_t code) {
        EXPECT_EQ(outcome.calls, 1);
        EXPECT_FALSE(outcome.presented);
        ASSERT_TRUE(outcome.error);
        EXPECT_EQ(outcome.error->domain(), domain);
        EXPECT_EQ(outcome.error->code(), code);
    }

    std::shared_ptr<VLInterstitialService> service =
        VLInterstitialService::serviceWith({.settings = settings,
                                            .urlBuilder = urlBuilder,
                                            .urlSession = urlSession,
                                            .payloadBuilder = payloadBuilder,
                                            .application = phone().application(),
                                            .notificationCenter = phone().notificationCenter()});
};

}  // namespace vorlane

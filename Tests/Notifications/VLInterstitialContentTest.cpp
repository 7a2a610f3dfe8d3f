// Answers of the server to an interstitial request.

#include <gtest/gtest.h>

#include "Public/VLConstants.h"
#include "Public/VLErrorDomains.h"
#include "Tests/Notifications/InterstitialsTest.h"

namespace vorlane {

namespace {

class VLInterstitialContentTest : public InterstitialsTest {};

TEST_F(VLInterstitialContentTest, AResponseWithoutAMessageShowsNothing) {
    for (const auto* body : {R"({})", R"({"message":null})", R"({"message":"text"})", R"({"message":[]})",
                             R"({"message":7})", R"({"Message":{}})"}) {
        log().clear();
        expectNothing(shown(makeInterstitial(), body));
        EXPECT_EQ(log().count("No interstitial message content found for this tracking id.", VLLogLevel::Info), 1)
            << body;
    }
}

/// A message and the error that it causes.
struct HostileContent {
    std::string message;
    std::string domain;
    std::int64_t code;
};

class VLInterstitialHostileContentTest : public VLInterstitialContentTest,
                                         public testing::WithParamInterface<HostileContent> {};

TEST_P(VLInterstitialHostileContentTest, EndsInAParseError) {
    const auto interstitial = makeInterstitial(Interstitial::Metadata::Taken);
    const auto result = shown(interstitial, R"({"message":)" + GetParam().message + "}");
    expectError(result, GetParam().domain, GetParam().code);
    EXPECT_EQ(log().count("Cannot display interstitial because its HTML content was corrupted.", VLLogLevel::Error), 1);
    EXPECT_EQ(interstitial->htmlContent(), "");
    EXPECT_EQ(interstitial->metadata(), std::nullopt);
    EXPECT_EQ(interstitial->appearances(), 0);
    EXPECT_EQ(service->displayedInterstitialController(), nullptr);
}

/// A message with the given content.
std::string messageWith(const std::string& content) {
    return Value(Dictionary{{"messagecontent", content}, {"phash", "p"}}).dump();
}

INSTANTIATE_TEST_SUITE_P(Contents, VLInterstitialHostileContentTest,
                         testing::Values(HostileContent{R"({})", VLErrorDomainNetwork, 0},
                                         HostileContent{R"({"messagecontent":null})", VLErrorDomainNetwork, 0},
                                         HostileContent{R"({"messagecontent":7})", VLErrorDomainNetwork, 0},
                                         HostileContent{R"({"messagecontent":{"html":"x"}})", VLErrorDomainNetwork, 0},
                                         HostileContent{messageWith(""), VLErrorDomainNetwork, 0},
                                         HostileContent{messageWith("%"), VLErrorDomainNetwork, 0},
                                         HostileContent{messageWith("%7B%7"), VLErrorDomainNetwork, 0},
                                         HostileContent{messageWith("%ff%fe"), VLErrorDomainNetwork, 0},
                                         HostileContent{messageWith("no JSON"), NSCocoaErrorDomain, 3840},
                                         HostileContent{messageWith("%7B%22html%22"), NSCocoaErrorDomain, 3840},
                                         HostileContent{messageWith("%5B1%5D"), NSCocoaErrorDomain, 3840},
                                         HostileContent{messageWith("%22text%22"), NSCocoaErrorDomain, 3840},
                                         HostileContent{messageWith("null"), NSCocoaErrorDomain, 3840},
                                         HostileContent{messageWith("7"), NSCocoaErrorDomain, 3840},
                                         HostileContent{messageWith("%7B%7D%00"), NSCocoaErrorDomain, 3840},
                                         HostileContent{messageWith("{\"a\":" + std::string(600, '[') +
                                                                    std::string(600, ']') + "}"),
                                                        NSCocoaErrorDomain, 3840}));

/// The content of a message and the page that is shown for it.
struct OddPage {
    std::string content;
    std::string page;
};

class VLInterstitialOddPageTest : public VLInterstitialContentTest, public testing::WithParamInterface<OddPage> {};

TEST_P(VLInterstitialOddPageTest, IsShownAsFarAsPossible) {
    const auto interstitial = makeInterstitial();
    expectPresented(shown(interstitial, answerWithContent(GetParam().content)));
    EXPECT_EQ(interstitial->htmlContent(), VIEWPORT_META_TAG + GetParam().page);
}

INSTANTIATE_TEST_SUITE_P(Pages, VLInterstitialOddPageTest,
                         testing::Values(OddPage{R"({})", ""}, OddPage{R"({"html":null})", ""},
                                         OddPage{R"({"html":["<p>"]})", ""}, OddPage{R"({"html":""})", ""},
                                         // A page that is not encoded a second time.
                                         OddPage{R"({"html":"<p>50% off</p>"})", "<p>50% off</p>"},
                                         OddPage{R"({"html":"a+b%2Bc"})", "a+b+c"},
                                         OddPage{R"({"html":"%ff"})", "%ff"}));

TEST_F(VLInterstitialContentTest, APhashOfAnotherTypeIsAbsent) {
    for (const auto* phash : {R"(null)", R"(7)", R"({"p":"q"})"}) {
        const auto interstitial = makeInterstitial();
        interstitial->setPhash("old");
        expectPresented(
            shown(interstitial, std::string(R"({"message":{"messagecontent":"%7B%7D","phash":)") + phash + "}}"));
        EXPECT_EQ(interstitial->phash(), std::nullopt);
        const auto skipped = makeInterstitial();
        log().clear();
        expectNothing(shown(skipped, R"({"message":{"messagecontent":"%7B%7D"}})"));
        EXPECT_EQ(
            log().count("Interstitial: is already being displayed. Skipping display of interstitial with phash: (null)",
                        VLLogLevel::Info),
            1);
        interstitial->close();
    }
}

}  // namespace

}  // namespace vorlane

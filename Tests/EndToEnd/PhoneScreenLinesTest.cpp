#include <gmock/gmock.h>

#include "Tests/EndToEnd/EndToEndTest.h"

namespace vorlane {

namespace {

const char* const kPresent = "presentInterstitialWithPlacement:viewController:animated:completionHandler:";

/// Tests the commands for screens, view controllers and links, which need no answer of the service.
class PhoneScreenLinesTest : public EndToEndTest {
protected:
    PhoneScreenLinesTest() { startPhone(); }

    Value presented() { return phone->perform({{"do", "query"}, {"what", "presented"}}); }
    Value help(const std::string& name, Array arguments) {
        return phone->perform({{"do", "helper"}, {"name", name}, {"args", std::move(arguments)}});
    }

    /// Presents an interstitial and returns the error.
    Value errorOf(Array arguments) {
        phone->takeEvents();
        phone->call(kPresent, std::move(arguments));
        const auto results = phone->events("result");
        if (results.size() != 1) return "no result";
        EXPECT_EQ(results.front().at("values")[0], Value(false));
        EXPECT_EQ(results.front().at("main"), Value(true));
        return results.front().at("values")[1];
    }
};

TEST_F(PhoneScreenLinesTest, StartsWithAPlainScreenAndAcceptsAnyChain) {
    EXPECT_EQ(presented(), Value(Array{"plain"}));
    for (const Array& chain : {Array{"plain", "navigation", "alert"}, Array{"navigation", "plain", "plain"},
                               Array{"alert"}, Array{"navigation"}, Array{}}) {
        phone->perform({{"do", "viewControllers"}, {"chain", chain}});
        EXPECT_EQ(presented(), Value(chain));
    }
}

TEST_F(PhoneScreenLinesTest, UnusableLinesAreErrorsWithoutEffect) {
    const std::string call = std::string(R"({"do":"call","op":")") + kPresent + R"(","args":)";
    for (const auto& line :
         {std::string(R"({"do":"viewControllers"})"), std::string(R"({"do":"viewControllers","chain":"plain"})"),
          std::string(R"({"do":"viewControllers","chain":["plain","odd"]})"),
          std::string(R"({"do":"viewControllers","chain":["plain",7]})"),
          std::string(R"({"do":"dismissInterstitial"})"),
          std::string(R"({"do":"launch","options":{"appOpenInterstitial":"odd"}})"),
          std::string(R"({"do":"launch","options":{"appOpenInterstitial":7}})"), call + "[]}", call + "[0]}",
          call + R"([0,"interstitial"]})", call + R"([0,"odd",true]})", call + R"([0,"interstitial",1]})",
          call + R"(["0","interstitial",true]})",
          std::string(R"({"do":"call","op":"openVorlaneDeepLink:","args":[7]})"),
          std::string(R"({"do":"call","op":"askForPermission:","args":["0"]})"),
          std::string(R"({"do":"call","op":"askForPermission:interstitialViewController:","args":[0]})"),
          std::string(R"({"do":"helper","name":"vl_colorWithHexString:alpha:","args":["fff"]})"),
          std::string(R"({"do":"helper","name":"stringForPlacement:","args":["0"]})")}) {
        EXPECT_TRUE(phone->answerToText(line).contains("error")) << line;
    }
    EXPECT_EQ(presented(), Value(Array{"plain"}));
}

TEST_F(PhoneScreenLinesTest, UnsuitableViewControllersAreReported) {
    EXPECT_EQ(errorOf({1, nullptr, true})["code"], Value(1));
    EXPECT_EQ(errorOf({1, "notAViewController", true})["description"],
              Value("Interstitial view controller object of type NSObject is not a subclass of UIViewController"));
    EXPECT_EQ(errorOf({1, "plainViewController", true})["description"],
              Value("Interstitial view controller object of type UIViewController does not conform to "
                    "VLInterstitialViewController protocol"));
    EXPECT_EQ(errorOf({39, "interstitial", true})["description"],
              Value("Could not display invalid placement with raw value 39"));
}

TEST_F(PhoneScreenLinesTest, LinksAreFollowedAndOpenTheSettings) {
    EXPECT_EQ(phone->call("openVorlaneDeepLink:", {"vorlane://notification-settings-yes"}), Value(true));
    const auto opened = phone->events("openURL");
    ASSERT_EQ(opened.size(), 1U);
    EXPECT_EQ(opened.front().at("url"), Value("app-settings:"));
    EXPECT_EQ(phone->call("openVorlaneDeepLink:", {"vorlane://location-no"}), Value(true));
    EXPECT_EQ(phone->call("openVorlaneDeepLink:", {"https://vorlane.example/"}), Value(false));
    EXPECT_EQ(phone->call("openVorlaneDeepLink:", {"no URL"}), Value(false));
    EXPECT_EQ(phone->call("openVorlaneDeepLink:", {nullptr}), Value(false));
    EXPECT_EQ(phone->call("locationAuthorisationStatus"), Value(0));
}

TEST_F(PhoneScreenLinesTest, HelpersAndConstantsAreAvailable) {
    EXPECT_EQ(help("stringForPlacement:", {38}), Value("Placement Z"));
    EXPECT_EQ(help("stringForPlacement:", {39}), Value());
    EXPECT_EQ(help("stringForPlacement:", {-1}), Value());
    EXPECT_EQ(help("vl_colorWithHexString:alpha:", {"#f00", 0.5}),
              Value(Dictionary{{"red", 1.0}, {"green", 0.0}, {"blue", 0.0}, {"alpha", 0.5}}));
    EXPECT_EQ(help("vl_prependHTMLStringWithViewportMetaTag", {"<p>"}),
              Value(R"(<meta name="viewport" content="initial-scale=1.0" /><p>)"));
    const auto constants = phone->perform({{"do", "query"}, {"what", "constants"}});
    EXPECT_EQ(constants["VLNotificationInterstitialWasDismissed"], Value("VLNotificationInterstitialWasDismissed"));
    EXPECT_EQ(constants["VIEWPORT_META_TAG"], Value(R"(<meta name="viewport" content="initial-scale=1.0" />)"));
}

TEST_F(PhoneScreenLinesTest, AColourOfTheWrongLengthAborts) {
    phone->send(R"({"do":"helper","name":"vl_colorWithHexString:alpha:","args":["#12345",1]})");
    // 128 plus the number of SIGABRT.
    EXPECT_EQ(phone->wait(), 128 + 6);
}

TEST_F(PhoneScreenLinesTest, PendingRequestsDoNotPreventQuitting) {
    for (int i = 0; i < 3; ++i) phone->call("askForPermission:interstitialViewController:", {0, "interstitial"});
    phone->call("askForPermission:", {1});
    EXPECT_EQ(phone->quit(), 0);
}

}  // namespace

}  // namespace vorlane

#include "Network/VLURLActions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Notifications/PermissionsTest.h"

namespace vorlane {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class VLURLActionsTest : public PermissionsTest {
protected:
    VLURLActionsTest() {
        phone().simulatedUser().setAnswer("notifications", SimulatedUser::Answer::Later);
        locationManager->setRequestObserver(
            [this](const std::string& kind) { onMainQueue([this, kind] { note(kind); }); });
        application().setEventObserver([this](const std::string& event, const Dictionary& fields) {
            if (event == "prompt") note(fields.at("kind").get<std::string>());
            if (event == "openURL") note("open " + fields.at("url").get<std::string>());
        });
        start();
    }

    void note(const std::string& what) { done.push_back(what); }

    bool handle(const std::string& text) {
        const auto url = NSURL::URLWithString(text);
        EXPECT_TRUE(url) << text;
        const bool wasHandled = actions.handleVorlaneActionURL(url);
        phone().settle();
        return wasHandled;
    }

    /// A link and its action.
    std::vector<std::string> handled(const std::string& text) {
        done.clear();
        EXPECT_TRUE(handle(text)) << text;
        return done;
    }

    void expectIgnoredSilently(const std::string& text) {
        log().clear();
        EXPECT_FALSE(handle(text)) << text;
        EXPECT_THAT(done, IsEmpty()) << text;
        EXPECT_THAT(log().lines(), IsEmpty()) << text;
    }

    std::vector<std::string> done;
    VLURLActions actions{permissions, phone().application()};
};

TEST_F(VLURLActionsTest, EachHostHasItsAction) {
    EXPECT_THAT(handled("vorlane://notification-yes"), ElementsAre("notifications"));
    EXPECT_THAT(handled("vorlane://notification-no"), IsEmpty());
    EXPECT_THAT(handled("vorlane://location-yes"), ElementsAre("locationAlways"));
    EXPECT_THAT(handled("vorlane://location-no"), IsEmpty());
    EXPECT_THAT(handled("vorlane://notification-settings-yes"), ElementsAre("open app-settings:"));
    EXPECT_THAT(handled("vorlane://location-settings-yes"), ElementsAre("open app-settings:"));
    EXPECT_THAT(handled("vorlane://notification-location-no"), IsEmpty());
}

TEST_F(VLURLActionsTest, NotificationsAreAskedForBeforeLocation) {
    // Both requests wait until the service starts, so that their order is known.
    permissions = makeService();
    VLURLActions waiting(permissions, phone().application());
    EXPECT_TRUE(waiting.handleVorlaneActionURL(NSURL::URLWithString("vorlane://notification-location-yes")));
    phone().settle();
    EXPECT_THAT(done, IsEmpty());
    start();
    EXPECT_THAT(done, ElementsAre("notifications", "locationAlways"));
}

TEST_F(VLURLActionsTest, OnlyTheSchemeIgnoresCase) {
    EXPECT_THAT(handled("VORLANE://notification-yes"), ElementsAre("notifications"));
    EXPECT_THAT(handled("VorLane://location-settings-yes"), ElementsAre("open app-settings:"));
    done.clear();
    expectIgnoredSilently("vorlane://Notification-Yes");
    expectIgnoredSilently("vorlane://LOCATION-YES");
}

TEST_F(VLURLActionsTest, PathQueryFragmentUserAndPortAreIgnored) {
    for (const auto* text : {"vorlane://location-yes/", "vorlane://location-yes/a/b?c=d#e", "vorlane://location-yes?x",
                             "vorlane://location-yes#notification-no", "vorlane://user@location-yes:80/"}) {
        EXPECT_THAT(handled(text), ElementsAre("locationAlways")) << text;
    }
}

TEST_F(VLURLActionsTest, UnknownAndMissingHostsAreIgnoredSilently) {
    for (const auto* text : {"vorlane://", "vorlane:///notification-yes", "vorlane:notification-yes", "vorlane:",
                             "vorlane:/notification-yes", "vorlane://notification", "vorlane://notification-yes-please",
                             "vorlane://notification-yes.", "vorlane://yes/notification-yes"}) {
        expectIgnoredSilently(text);
    }
}

TEST_F(VLURLActionsTest, AWebLinkIsIgnoredAndLogged) {
    EXPECT_FALSE(handle("https://vorlane.example/notification-yes?a=b#c"));
    EXPECT_EQ(log().count("Vorlane ignored URL https://vorlane.example/notification-yes?a=b#c because it does not use "
                          "the vorlane:// scheme",
                          VLLogLevel::Info),
              1);
    EXPECT_FALSE(handle("vorlanes://notification-yes"));
    EXPECT_EQ(log().count("Vorlane ignored URL vorlanes://notification-yes because it does not use the vorlane:// "
                          "scheme",
                          VLLogLevel::Info),
              1);
    EXPECT_THAT(done, IsEmpty());
}

TEST_F(VLURLActionsTest, NulloptIsIgnoredAndLogged) {
    EXPECT_FALSE(actions.handleVorlaneActionURL(std::nullopt));
    EXPECT_EQ(log().count("Vorlane ignored a nil URL", VLLogLevel::Info), 1);
}

TEST_F(VLURLActionsTest, EachActionReturnsTrue) {
    EXPECT_TRUE(actions.onNotificationYes());
    EXPECT_TRUE(actions.onNotificationNo());
    EXPECT_TRUE(actions.onLocationYes());
    EXPECT_TRUE(actions.onLocationNo());
    EXPECT_TRUE(actions.onLoadSettings());
    EXPECT_TRUE(actions.onNotificationAndLocationYes());
    EXPECT_TRUE(actions.onNotificationAndLocationNo());
}

TEST_F(VLURLActionsTest, ADestroyedApplicationOpensNoURL) {
    VLURLActions alone(permissions, std::weak_ptr<UIApplication>());
    EXPECT_TRUE(alone.handleVorlaneActionURL(NSURL::URLWithString("vorlane://location-settings-yes")));
    EXPECT_THAT(done, IsEmpty());
}

TEST_F(VLURLActionsTest, APercentEncodedHostIsDecoded) {
    EXPECT_THAT(handled("vorlane://notification%2Dyes"), ElementsAre("notifications"));
}

}  // namespace

}  // namespace vorlane

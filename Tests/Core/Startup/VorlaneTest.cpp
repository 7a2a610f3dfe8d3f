#include "Public/Vorlane.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "Platform/NSFileManager.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

const std::string kAppKey = "0123456789abcdef0123456789abcdef";
const std::string kLateURLsWarning =
    "setURLs() was called after the first use. The services keep the endpoint set they were made with.";

class VorlaneTest : public SimulatedPhoneTest {
protected:
    void launch() {
        auto options = VLSDKOptions::developmentOptions();
        options.setAppKey(kAppKey);
        Vorlane::initialiseSDKWithApplication(phone().application(), std::nullopt, options);
    }

    Value lastEvent() { return session().lastRequest("register_app_event").payload(); }
};

TEST_F(VorlaneTest, TheVersionConstantsNameTheBuild) {
    EXPECT_STREQ(VorlaneVersionString, "@(#)PROGRAM:Vorlane  PROJECT:Vorlane-28\n");
    EXPECT_EQ(VorlaneVersionNumber, 28.0);
}

TEST_F(VorlaneTest, TheFirstUseMakesTheFacadeAndTheSettingsFile) {
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(documentsPath("VLLibSettings.plist")));
    const auto trackingId = Vorlane::trackingId();
    EXPECT_EQ(trackingId.size(), 32U);
    EXPECT_EQ(trackingId.substr(0, 4), "@VL@");
    EXPECT_EQ(Vorlane::trackingId(), trackingId);
    EXPECT_TRUE(NSFileManager::fileExistsAtPath(documentsPath("VLLibSettings.plist")));
}

TEST_F(VorlaneTest, TheProductionURLsAreSetByTheFirstUse) {
    EXPECT_EQ(Vorlane::getURLs(), nullptr);
    Vorlane::trackingId();
    EXPECT_TRUE(std::dynamic_pointer_cast<VLURLsProduction>(Vorlane::getURLs()));
}

TEST_F(VorlaneTest, URLsSetBeforeTheFirstUseAreUsed) {
    Vorlane::setURLs(VLURLsProduction::URLsWithOrigin(*NSURL::URLWithString("http://127.0.0.1:9")));
    launch();
    EXPECT_EQ(log().count(kLateURLsWarning, VLLogLevel::Warn), 0);
    EXPECT_EQ(session().requests("http://127.0.0.1:9/config/application/ios/").size(), 1U);
}

TEST_F(VorlaneTest, URLsSetAfterTheFirstUseAreNotUsed) {
    Vorlane::trackingId();
    const auto urls = VLURLsProduction::URLsWithOrigin(*NSURL::URLWithString("http://127.0.0.1:9"));
    Vorlane::setURLs(urls);
    EXPECT_EQ(Vorlane::getURLs(), urls);
    EXPECT_EQ(log().count(kLateURLsWarning, VLLogLevel::Warn), 1);
    launch();
    EXPECT_TRUE(session().requests("127.0.0.1").empty());
    EXPECT_EQ(session().requests("/config/application/ios/").size(), 1U);
}

TEST_F(VorlaneTest, TheDestructorOfReplacedURLsSeesTheNewSet) {
    class Leaving : public VLURLsProduction {
    public:
        explicit Leaving(std::shared_ptr<VLURLs>& seen) : seen_(seen) {}
        ~Leaving() override { seen_ = Vorlane::getURLs(); }

    private:
        std::shared_ptr<VLURLs>& seen_;
    };
    std::shared_ptr<VLURLs> seen;
    Vorlane::setURLs(std::make_shared<Leaving>(seen));
    const auto next = std::make_shared<VLURLsProduction>();
    Vorlane::setURLs(next);
    EXPECT_EQ(seen, next);
}

TEST_F(VorlaneTest, ConcurrentFirstCallsMakeOneFacade) {
    std::vector<Vorlane*> found(8);
    std::vector<std::thread> threads;
    for (auto& facade : found) threads.emplace_back([&facade] { facade = &Vorlane::sharedInstance(); });
    for (auto& thread : threads) thread.join();
    for (const auto* facade : found) EXPECT_EQ(facade, found.front());
}

TEST_F(VorlaneTest, TheDeviceIdIsMadeOnceAndTheTokenIsAbsent) {
    const auto deviceId = Vorlane::deviceId();
    EXPECT_EQ(deviceId.size(), 36U);
    EXPECT_EQ(Vorlane::deviceId(), deviceId);
    EXPECT_EQ(Vorlane::deviceToken(), std::nullopt);
}

TEST_F(VorlaneTest, ThePhashCanBeSetAndCleared) {
    EXPECT_EQ(Vorlane::phash(), std::nullopt);
    Vorlane::setPhash("hash");
    EXPECT_EQ(Vorlane::phash(), "hash");
    Vorlane::setPhash(std::nullopt);
    EXPECT_EQ(Vorlane::phash(), std::nullopt);
}

TEST_F(VorlaneTest, AChangedTrackingIdIsReportedToTheService) {
    launch();
    const auto before = Vorlane::trackingId();
    Vorlane::setTrackingId("anna");
    EXPECT_EQ(Vorlane::trackingId(), "anna");
    const auto payload = session().lastRequest("/0.8/session/tracking_id").payload();
    EXPECT_EQ(payload["tracking_id"], Value("anna"));
    EXPECT_EQ(payload["prev_tracking_id"], Value(before));
}

TEST_F(VorlaneTest, EventsCarryLabelDataAndPhash) {
    Vorlane::registerEventWithType("buy", "shoes");
    EXPECT_EQ(lastEvent()["event_type"], Value("buy"));
    EXPECT_EQ(lastEvent()["event_label"], Value("shoes"));
    EXPECT_EQ(lastEvent()["phash"], Value(""));

    Vorlane::registerEventWithType("buy", "shoes", "hash");
    EXPECT_EQ(lastEvent()["event_label"], Value("shoes"));
    EXPECT_EQ(lastEvent()["phash"], Value("hash"));

    Vorlane::registerEventWithType("level", Dictionary{{"reached", 3}});
    EXPECT_EQ(lastEvent()["event_label"], Value(Dictionary{{"reached", 3}}));

    Vorlane::registerEventWithType("level", Dictionary{{"reached", 4}}, "other");
    EXPECT_EQ(lastEvent()["event_label"], Value(Dictionary{{"reached", 4}}));
    EXPECT_EQ(lastEvent()["phash"], Value("other"));

    Vorlane::registerEventWithType("bare", std::nullopt);
    EXPECT_EQ(lastEvent()["event_label"], Value(""));
}

TEST_F(VorlaneTest, TagOperationsReachTheService) {
    std::optional<std::string> value;
    std::vector<std::string> done;
    Vorlane::getTag("size", [&](auto received, const auto&) { value = received; });
    session().answer("/tag/size", 200, R"({"value":42})");
    Vorlane::setTag("size", "42", VLTagType::Numeric, [&](const auto&) { done.emplace_back("set"); });
    session().answer("/tracking/", 200);
    Vorlane::batchSetTags(Array{Dictionary{{"name", "a"}}}, [&](const auto&) { done.emplace_back("batch"); });
    session().answer("/tracking/", 200);
    Vorlane::deleteAllTagsWithCompletionHandler([&](const auto&) { done.emplace_back("delete"); });
    session().answer("/tag/*", 200);
    EXPECT_EQ(value, std::nullopt);
    EXPECT_TRUE(done.empty());
    phone().settle();
    EXPECT_EQ(value, "42");
    EXPECT_EQ(done, (std::vector<std::string>{"set", "batch", "delete"}));
}

TEST_F(VorlaneTest, TheReportedVersionNamesTheContainer) {
    Vorlane::setContainer("N", "V", "1.2");
    Dictionary json;
    Vorlane::sharedInstance().addCommonJsonData(json);
    EXPECT_EQ(json["lv"], Value("2.0.1-N-V"));
}

TEST_F(VorlaneTest, AddCommonJsonDataAddsThreeFields) {
    phone().setDocumentsCreationDate(1'600'000'000.25);
    Dictionary json{{"own", 1}, {"sid", "replaced"}};
    Vorlane::sharedInstance().addCommonJsonData(json);
    Vorlane::registerEventWithType("any", std::nullopt);
    EXPECT_EQ(json, (Dictionary{{"own", 1}, {"sid", lastEvent()["sid"]}, {"lv", "2.0.1"}, {"acit", "1600000000250"}}));
}

TEST_F(VorlaneTest, AnEventBeforeStartUpHasNoAppKey) {
    Vorlane::registerEventWithType("early", "bird");
    EXPECT_EQ(session().requests("register_app_event?app_key=(null)").size(), 1U);
    EXPECT_FALSE(lastEvent().contains("app_key"));
}

TEST_F(VorlaneTest, LocationAuthorisationStatusMakesTheFacade) {
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(documentsPath("VLLibSettings.plist")));
    EXPECT_EQ(Vorlane::locationAuthorisationStatus(), 0);
    EXPECT_TRUE(NSFileManager::fileExistsAtPath(documentsPath("VLLibSettings.plist")));
    EXPECT_TRUE(Vorlane::getURLs());
}

}  // namespace

}  // namespace vorlane

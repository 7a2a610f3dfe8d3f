#include "Tracking/VLConfigService.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Platform/NSFileManager.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Public/VLConstants.h"
#include "Tests/Tracking/HostileBodies.h"
#include "Tests/Tracking/TrackingTest.h"

namespace vorlane {

namespace {

using LoadStatus = VLConfigService::LoadStatus;

const std::string kPath = "/config/application/ios/";
const std::string kDocument =
    R"({"services":{"geo_regions":true,"beacon":false,"rich_inbox":1},)"
    R"("configs":{"rich_inbox":{"sync_time_limit_s":30,"text":"30","flag":true,"half":2.5}}})";

class VLConfigServiceTest : public TrackingTest {
protected:
    std::shared_ptr<VLConfigService> makeService() {
        return std::make_shared<VLConfigService>(settings, urlBuilder, urlSession);
    }

    VLConfigService::LoadHandler handler() {
        return [this](LoadStatus status) {
            ++calls;
            loaded = status;
        };
    }

    std::optional<LoadStatus> loadAnswered(const std::string& body, int status = 200) {
        loaded.reset();
        service->loadConfigWithCompletion(handler());
        session().answer(kPath, status, body);
        return loaded;
    }

    std::optional<LoadStatus> loadOffline() {
        loaded.reset();
        service->loadConfigWithCompletion(handler());
        session().fail(kPath);
        return loaded;
    }

    void writeCache(const std::string& text) {
        ASSERT_TRUE(NSFileManager::writeToFile(Data(text.begin(), text.end()), documentsPath("VLConfig.plist")));
    }

    std::optional<Dictionary> cache() {
        return NSPropertyListSerialization::dictionaryWithContentsOfFile(documentsPath("VLConfig.plist"));
    }

    int calls = 0;
    std::optional<LoadStatus> loaded;
    std::shared_ptr<VLConfigService> service = makeService();
};

TEST_F(VLConfigServiceTest, TheServiceNamesAreTheConfigurationsWords) {
    EXPECT_STREQ(VLCONFIGSERVICEGEO, "geo_regions");
    EXPECT_STREQ(VLCONFIGSERVICEBEACON, "beacon");
    EXPECT_STREQ(VLCONFIGSERVICEPERMISSION, "permission");
    EXPECT_STREQ(VLCONFIGSERVICEINBOX, "rich_inbox");
}

TEST_F(VLConfigServiceTest, ALoadIsOneGetWithTheIdentities) {
    service->loadConfigWithCompletion(nullptr);
    const auto request = session().lastRequest();
    EXPECT_EQ(request.request.HTTPMethod, "GET");
    EXPECT_EQ(request.request.URL, urlBuilder->configURL());
    EXPECT_TRUE(request.request.URL.absoluteString().ends_with(
        "/config/application/ios/K?sdkVersion=2.0.1&trackingId=T&deviceId=" + settings->deviceId()));
}

TEST_F(VLConfigServiceTest, AFetchedConfigurationIsInForceAndCached) {
    EXPECT_EQ(loadAnswered(kDocument), LoadStatus::fetched);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(*service->configDictonary(), Value::parse(kDocument).get_ref<const Dictionary&>());
    EXPECT_EQ(cache(), *service->configDictonary());
    EXPECT_EQ(service->getFilePath(), documentsPath("VLConfig.plist"));
    EXPECT_EQ(log().count("Successfully loaded config from remote server", VLLogLevel::Info), 1);
}

TEST_F(VLConfigServiceTest, AFirstLaunchOfflineFindsNothingAndEnablesNothing) {
    EXPECT_EQ(loadOffline(), LoadStatus::unavailable);
    for (const auto* name :
         {VLCONFIGSERVICEGEO, VLCONFIGSERVICEBEACON, VLCONFIGSERVICEPERMISSION, VLCONFIGSERVICEINBOX}) {
        EXPECT_FALSE(service->serviceEnabled(name));
    }
    EXPECT_EQ(service->configDictonary(), nullptr);
    EXPECT_EQ(
        log().count("Failed to fetch config from remote server and no config is cached locally.", VLLogLevel::Error),
        1);
}

TEST_F(VLConfigServiceTest, ALaterLaunchOfflineTakesTheCachedConfiguration) {
    loadAnswered(kDocument);
    service = makeService();
    EXPECT_EQ(loadOffline(), LoadStatus::cached);
    EXPECT_TRUE(service->serviceEnabled(VLCONFIGSERVICEGEO));
    EXPECT_EQ(service->integerForService(VLCONFIGSERVICEINBOX, "sync_time_limit_s", 5), 30);
    EXPECT_EQ(log().count("Couldn't fetch config from remote server, config loaded from local cache instead.",
                          VLLogLevel::Info),
              1);
    const auto lines = log().linesContaining("Cached config payload:");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, VLLogLevel::Debug);
    EXPECT_EQ(lines[0].payload, Value::parse(kDocument));
}

TEST_F(VLConfigServiceTest, AServerErrorLeadsToTheCacheAsWell) {
    loadAnswered(kDocument);
    EXPECT_EQ(loadAnswered(kDocument, 500), LoadStatus::cached);
}

TEST_F(VLConfigServiceTest, AFailedFetchNeverDeletesTheCache) {
    loadAnswered(kDocument);
    const auto before = cache();
    loadOffline();
    EXPECT_EQ(cache(), before);
}

TEST_F(VLConfigServiceTest, ANewConfigurationReplacesTheOldOneWhole) {
    loadAnswered(kDocument);
    loadAnswered(R"({"services":{"beacon":true}})");
    EXPECT_FALSE(service->serviceEnabled(VLCONFIGSERVICEGEO));
    EXPECT_TRUE(service->serviceEnabled(VLCONFIGSERVICEBEACON));
    EXPECT_FALSE(service->serviceConfig(VLCONFIGSERVICEINBOX));
}

TEST_F(VLConfigServiceTest, NullsAreDroppedInMemoryAsOnFile) {
    loadAnswered(R"({"services":{"beacon":null},"configs":{"beacon":{"a":[1,null,2],"b":null}},"c":null})");
    const Dictionary expected{{"services", Dictionary()},
                              {"configs", Dictionary{{"beacon", Dictionary{{"a", Array{1, 2}}}}}}};
    EXPECT_EQ(*service->configDictonary(), expected);
    EXPECT_EQ(cache(), expected);
}

TEST_F(VLConfigServiceTest, ADocumentWithoutServicesEnablesNothing) {
    loadAnswered(R"({"configs":{"beacon":{"a":1}}})");
    EXPECT_FALSE(service->serviceEnabled(VLCONFIGSERVICEBEACON));
    EXPECT_TRUE(service->serviceConfig(VLCONFIGSERVICEBEACON));
}

TEST_F(VLConfigServiceTest, EnabledIsTheBooleanValueOfTheEntry) {
    loadAnswered(R"({"services":{"a":true,"b":false,"c":1,"d":0,"e":"true","f":[],"g":{}}})");
    EXPECT_TRUE(service->serviceEnabled("a"));
    EXPECT_FALSE(service->serviceEnabled("b"));
    EXPECT_TRUE(service->serviceEnabled("c"));
    for (const auto* name : {"d", "e", "f", "g", "none"}) EXPECT_FALSE(service->serviceEnabled(name)) << name;
}

TEST_F(VLConfigServiceTest, AnIntegerIsTheDefaultForWhatIsMissingOrNoNumber) {
    loadAnswered(kDocument);
    EXPECT_EQ(service->integerForService(VLCONFIGSERVICEINBOX, "sync_time_limit_s", 5), 30);
    EXPECT_EQ(service->integerForService("none", "sync_time_limit_s", 5), 5);
    EXPECT_EQ(service->integerForService(VLCONFIGSERVICEINBOX, "none", 5), 5);
    EXPECT_EQ(service->integerForService(VLCONFIGSERVICEINBOX, "text", 5), 5);
    EXPECT_EQ(service->integerForService(VLCONFIGSERVICEINBOX, "flag", 5), 1);
    EXPECT_EQ(service->integerForService(VLCONFIGSERVICEINBOX, "half", 5), 2);
}

TEST_F(VLConfigServiceTest, ObjectsAndNumbersComeAsTheyAre) {
    loadAnswered(kDocument);
    EXPECT_EQ(service->objectForService(VLCONFIGSERVICEINBOX, "text", 7), Value("30"));
    EXPECT_EQ(service->objectForService(VLCONFIGSERVICEINBOX, "none", "default"), Value("default"));
    EXPECT_EQ(service->numberForService(VLCONFIGSERVICEINBOX, "half", 7), Value(2.5));
    EXPECT_EQ(service->numberForService(VLCONFIGSERVICEINBOX, "text", 7), Value(7));
}

TEST_F(VLConfigServiceTest, BeforeTheFirstLoadEverythingIsOffAndAtItsDefault) {
    EXPECT_EQ(service->configDictonary(), nullptr);
    EXPECT_FALSE(service->serviceEnabled(VLCONFIGSERVICEGEO));
    EXPECT_FALSE(service->serviceConfig(VLCONFIGSERVICEGEO));
    EXPECT_EQ(service->integerForService(VLCONFIGSERVICEINBOX, "sync_time_limit_s", 30), 30);
}

TEST_F(VLConfigServiceTest, EveryBodyThatIsNoObjectLeadsToTheCache) {
    loadAnswered(kDocument);
    for (const auto& body : bodiesThatAreNoObject()) {
        calls = 0;
        service->loadConfigWithCompletion(handler());
        session().answerData(kPath, 200, body.bytes);
        EXPECT_EQ(calls, 1) << body.name;
        EXPECT_EQ(loaded, LoadStatus::cached) << body.name;
        EXPECT_TRUE(service->serviceEnabled(VLCONFIGSERVICEGEO)) << body.name;
    }
}

TEST_F(VLConfigServiceTest, ValuesOfAnotherKindAtEveryLevelReadAsAbsent) {
    for (const auto* value : {"[]", "7", "null", "\"text\"", "true", "[[{}]]"}) {
        for (const auto* frame :
             {R"({"services":@,"configs":@})", R"({"services":{"beacon":@},"configs":{"beacon":@}})",
              R"({"configs":{"beacon":{"key":@}}})"}) {
            std::string body = frame;
            for (auto place = body.find('@'); place != std::string::npos; place = body.find('@')) {
                body.replace(place, 1, value);
            }
            EXPECT_EQ(loadAnswered(body), LoadStatus::fetched) << body;
            service->serviceEnabled("beacon");
            EXPECT_EQ(service->integerForService("beacon", "other", 5), 5) << body;
            EXPECT_EQ(cache(), *service->configDictonary()) << body;
        }
    }
}

TEST_F(VLConfigServiceTest, ADocument200LevelsDeepIsKept) {
    loadAnswered(R"({"configs":{"beacon":)" + nestedJSON(200, R"({"a":)", "1", "}") + "}}");
    service = makeService();
    EXPECT_EQ(loadOffline(), LoadStatus::cached);
    EXPECT_TRUE(service->serviceConfig("beacon"));
}

TEST_F(VLConfigServiceTest, OfDuplicateKeysTheLastOneWins) {
    loadAnswered(R"({"services":{"beacon":false,"beacon":true}})");
    EXPECT_TRUE(service->serviceEnabled("beacon"));
}

TEST_F(VLConfigServiceTest, ACacheThatCannotBeReadCountsAsMissingAndIsLeft) {
    for (const auto* text : {"", "garbage", "<plist><array/></plist>", "bplist00 and no more"}) {
        writeCache(text);
        EXPECT_EQ(loadOffline(), LoadStatus::unavailable) << text;
        EXPECT_TRUE(NSFileManager::fileExistsAtPath(documentsPath("VLConfig.plist")));
    }
}

TEST_F(VLConfigServiceTest, AConfigurationIsInForceEvenWhenItCannotBeCached) {
    ASSERT_TRUE(NSFileManager::createDirectoryAtPath(documentsPath("VLConfig.plist/occupied")));
    EXPECT_EQ(loadAnswered(kDocument), LoadStatus::fetched);
    EXPECT_TRUE(service->serviceEnabled(VLCONFIGSERVICEGEO));
}

TEST_F(VLConfigServiceTest, ALoadThatFailsWithoutACacheForgetsWhatWasInForce) {
    loadAnswered(kDocument);
    ASSERT_TRUE(NSFileManager::moveItemAtPath(documentsPath("VLConfig.plist"), documentsPath("away")));
    EXPECT_EQ(loadOffline(), LoadStatus::unavailable);
    EXPECT_EQ(service->configDictonary(), nullptr);
}

TEST_F(VLConfigServiceTest, TheHandlerRunsWhereTheHTTPLayerCallsBack) {
    bool wasMain = true;
    service->loadConfigWithCompletion([&](auto) { wasMain = phone().mainQueue()->isCurrent(); });
    session().answer(kPath, 200, kDocument);
    EXPECT_FALSE(wasMain);
}

TEST_F(VLConfigServiceTest, AServiceThatWentAwayStillAnswers) {
    service->loadConfigWithCompletion(handler());
    service.reset();
    session().answer(kPath, 200, kDocument);
    EXPECT_EQ(calls, 1);
}

TEST_F(VLConfigServiceTest, AReaderSeesTheOldOrTheNewDocumentWhole) {
    const std::string even = R"({"configs":{"beacon":{"a":2,"b":2}}})";
    const std::string odd = R"({"configs":{"beacon":{"a":1,"b":1}}})";
    loadAnswered(even);
    std::atomic<bool> isDone = false;
    std::thread reader([&] {
        while (!isDone) {
            const auto config = service->serviceConfig("beacon");
            EXPECT_EQ(config->at("a"), config->at("b"));
        }
    });
    for (int i = 0; i < 50; ++i) loadAnswered(i % 2 == 0 ? odd : even);
    isDone = true;
    reader.join();
}

}  // namespace

}  // namespace vorlane

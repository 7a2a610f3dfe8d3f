#include "Tracking/VLConfigService.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <thread>

#include "Platform/NSFileManager.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Public/VLConstants.h"
#include "Public/VLLog.h"
#include "Tests/Support/ServicesTest.h"
#include "Tests/Tracking/HostileBodies.h"

namespace vorlane {

namespace {

using LoadStatus = VLConfigService::LoadStatus;

const std::string kPath = "/config/application/ios/";
const std::string kHandlerRan = "the handler ran";
const std::string kDocument =
    R"({"services":{"geo_regions":true,"beacon":false,"rich_inbox":1},)"
    R"("configs":{"rich_inbox":{"sync_time_limit_s":30,"text":"30","flag":true,"half":2.5}}})";

class VLConfigServiceTest : public ServicesTest {
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

    VLConfigService::LoadHandler loggingHandler() {
        return [](LoadStatus) { logMessage(VLLogLevel::Info, kHandlerRan); };
    }

    /// The lines of the log in order, without those of the HTTP layer.
    std::vector<std::string> linesAboutConfig() {
        std::vector<std::string> found;
        for (const auto& line : log().lines()) {
            if (!line.message.starts_with("RQST") && !line.message.starts_with("RSPN")) found.push_back(line.message);
        }
        return found;
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

TEST_F(VLConfigServiceTest, TheServiceNamesAreThoseOfTheConfiguration) {
    EXPECT_STREQ(VLCONFIGSERVICEGEO, "geo_regions");
    EXPECT_STREQ(VLCONFIGSERVICEBEACON, "beacon");
    EXPECT_STREQ(VLCONFIGSERVICEPERMISSION, "permission");
    EXPECT_STREQ(VLCONFIGSERVICEINBOX, "rich_inbox");
}

TEST_F(VLConfigServiceTest, TheStatusesAre0To2) {
    EXPECT_EQ(static_cast<std::int64_t>(LoadStatus::Fetched), 0);
    EXPECT_EQ(static_cast<std::int64_t>(LoadStatus::Cached), 1);
    EXPECT_EQ(static_cast<std::int64_t>(LoadStatus::Unavailable), 2);
}

TEST_F(VLConfigServiceTest, ALoadIsOneGetWithTheIdentities) {
    service->loadConfigWithCompletion(nullptr);
    const auto request = session().lastRequest();
    EXPECT_EQ(request.request.HTTPMethod, "GET");
    EXPECT_EQ(request.request.URL, urlBuilder->configURL());
    EXPECT_EQ(session().requests().size(), 1U);
    EXPECT_FALSE(request.request.HTTPBody);
    EXPECT_TRUE(request.request.URL.absoluteString().ends_with(
        "/config/application/ios/K?sdkVersion=2.0.1&trackingId=T&deviceId=" + settings->deviceId()));
}

TEST_F(VLConfigServiceTest, AFetchedConfigurationIsUsedAndCached) {
    EXPECT_EQ(loadAnswered(kDocument), LoadStatus::Fetched);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(*service->configDictonary(), Value::parse(kDocument).get_ref<const Dictionary&>());
    EXPECT_EQ(cache(), *service->configDictonary());
    EXPECT_EQ(service->getFilePath(), documentsPath("VLConfig.plist"));
    EXPECT_EQ(log().count("Successfully loaded config from remote server", VLLogLevel::Info), 1);
}

TEST_F(VLConfigServiceTest, AFirstLaunchOfflineEnablesNoService) {
    EXPECT_EQ(loadOffline(), LoadStatus::Unavailable);
    for (const auto* name :
         {VLCONFIGSERVICEGEO, VLCONFIGSERVICEBEACON, VLCONFIGSERVICEPERMISSION, VLCONFIGSERVICEINBOX}) {
        EXPECT_FALSE(service->serviceEnabled(name));
    }
    EXPECT_EQ(service->configDictonary(), nullptr);
    EXPECT_EQ(
        log().count("Failed to fetch config from remote server and no config is cached locally.", VLLogLevel::Error),
        1);
}

TEST_F(VLConfigServiceTest, ALaterLaunchOfflineUsesTheCache) {
    loadAnswered(kDocument);
    service = makeService();
    EXPECT_EQ(loadOffline(), LoadStatus::Cached);
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

TEST_F(VLConfigServiceTest, AFetchIsLoggedBeforeTheHandlerRuns) {
    service->loadConfigWithCompletion(loggingHandler());
    session().answer(kPath, 200, kDocument);
    EXPECT_EQ(linesAboutConfig(),
              (std::vector<std::string>{"Successfully loaded config from remote server", kHandlerRan}));
}

TEST_F(VLConfigServiceTest, TheHandlerRunsBeforeTheCachedConfigurationIsLogged) {
    loadAnswered(kDocument);
    log().clear();
    service->loadConfigWithCompletion(loggingHandler());
    session().fail(kPath);
    EXPECT_EQ(linesAboutConfig(),
              (std::vector<std::string>{
                  kHandlerRan, "Couldn't fetch config from remote server, config loaded from local cache instead.",
                  "Cached config payload:"}));
}

TEST_F(VLConfigServiceTest, TheHandlerRunsBeforeTheMissingConfigurationIsLogged) {
    service->loadConfigWithCompletion(loggingHandler());
    session().fail(kPath);
    EXPECT_EQ(linesAboutConfig(),
              (std::vector<std::string>{kHandlerRan,
                                        "Failed to fetch config from remote server and no config is cached locally."}));
}

TEST_F(VLConfigServiceTest, AnEmptyObjectIsAConfiguration) {
    EXPECT_EQ(loadAnswered("{}"), LoadStatus::Fetched);
    ASSERT_TRUE(service->configDictonary());
    service = makeService();
    EXPECT_EQ(loadOffline(), LoadStatus::Cached);
    ASSERT_TRUE(service->configDictonary());
    EXPECT_TRUE(service->configDictonary()->empty());
}

TEST_F(VLConfigServiceTest, ALoadWithoutAHandlerTakesEffect) {
    service->loadConfigWithCompletion(nullptr);
    session().fail(kPath);
    EXPECT_EQ(service->configDictonary(), nullptr);
    service->loadConfigWithCompletion(nullptr);
    session().answer(kPath, 200, kDocument);
    EXPECT_TRUE(service->serviceEnabled(VLCONFIGSERVICEGEO));
    service->loadConfigWithCompletion(nullptr);
    session().fail(kPath);
    EXPECT_TRUE(service->serviceEnabled(VLCONFIGSERVICEGEO));
}

TEST_F(VLConfigServiceTest, OfTwoConcurrentLoadsTheLastAnswerCounts) {
    std::vector<LoadStatus> statuses;
    for (int i = 0; i < 2; ++i) {
        service->loadConfigWithCompletion([&](LoadStatus status) { statuses.push_back(status); });
    }
    session().answer(kPath, 200, kDocument);
    session().answer(kPath, 200, R"({"services":{"beacon":true}})");
    EXPECT_EQ(statuses, (std::vector{LoadStatus::Fetched, LoadStatus::Fetched}));
    EXPECT_TRUE(service->serviceEnabled(VLCONFIGSERVICEBEACON));
    EXPECT_FALSE(service->serviceEnabled(VLCONFIGSERVICEGEO));
}

TEST_F(VLConfigServiceTest, AServerErrorLeadsToTheCache) {
    loadAnswered(kDocument);
    EXPECT_EQ(loadAnswered(kDocument, 500), LoadStatus::Cached);
}

TEST_F(VLConfigServiceTest, AFailedFetchNeverDeletesTheCache) {
    loadAnswered(kDocument);
    const auto before = cache();
    loadOffline();
    EXPECT_EQ(cache(), before);
}

TEST_F(VLConfigServiceTest, ANewConfigurationReplacesTheWholeOldOne) {
    loadAnswered(kDocument);
    loadAnswered(R"({"services":{"beacon":true}})");
    EXPECT_FALSE(service->serviceEnabled(VLCONFIGSERVICEGEO));
    EXPECT_TRUE(service->serviceEnabled(VLCONFIGSERVICEBEACON));
    EXPECT_FALSE(service->serviceConfig(VLCONFIGSERVICEINBOX));
}

TEST_F(VLConfigServiceTest, NullsAreDroppedInMemoryAndInTheFile) {
    loadAnswered(R"({"services":{"beacon":null},"configs":{"beacon":{"a":[1,null,2],"b":null}},"c":null})");
    const Dictionary expected{{"services", Dictionary()},
                              {"configs", Dictionary{{"beacon", Dictionary{{"a", Array{1, 2}}}}}}};
    EXPECT_EQ(*service->configDictonary(), expected);
    EXPECT_EQ(cache(), expected);
}

TEST_F(VLConfigServiceTest, CharactersTheFileCannotHoldAreDropped) {
    for (const auto* entry :
         {R"("k":"\u0001")", R"("k":"a\u0000b")", R"("k":"\ufffe")", R"("\u0001":1)", R"("a\u0000b":1)",
          R"("\u0001":1,"\u0002":2)", R"("k":["\u0008",null,{"\u0008":null}])"}) {
        EXPECT_EQ(loadAnswered(std::string("{") + entry + "}"), LoadStatus::Fetched) << entry;
        const auto fetched = *service->configDictonary();
        EXPECT_EQ(cache(), fetched) << entry;
        service = makeService();
        EXPECT_EQ(loadOffline(), LoadStatus::Cached) << entry;
        EXPECT_EQ(*service->configDictonary(), fetched) << entry;
    }
    loadAnswered(R"({"k":"a\u0000b"})");
    EXPECT_EQ(*service->configDictonary(), (Dictionary{{"k",
                                                        "a\xEF\xBF\xBD"
                                                        "b"}}));
}

TEST_F(VLConfigServiceTest, NumbersAndStringsSurviveTheFile) {
    const std::string document = R"({"":"","unsigned":18446744073709551615,"least":-9223372036854775808,"real":0.1,)"
                                 R"("small":5e-324,"great":1e308,"whole":5.0,"blanks":" a ","lines":"a\r\nb\rc\t",)"
                                 R"("marks":"<&>]]>","emoji":"\ud83d\ude00","empty":[{},[]],"flags":[true,false]})";
    loadAnswered(document);
    const auto expected = Value::parse(document).get_ref<const Dictionary&>();
    EXPECT_EQ(*service->configDictonary(), expected);
    service = makeService();
    EXPECT_EQ(loadOffline(), LoadStatus::Cached);
    EXPECT_EQ(*service->configDictonary(), expected);
}

TEST_F(VLConfigServiceTest, ADocumentWithoutServicesEnablesNothing) {
    loadAnswered(R"({"configs":{"beacon":{"a":1}}})");
    EXPECT_FALSE(service->serviceEnabled(VLCONFIGSERVICEBEACON));
    EXPECT_TRUE(service->serviceConfig(VLCONFIGSERVICEBEACON));
}

TEST_F(VLConfigServiceTest, ServiceEnabledReadsTheEntryAsABoolean) {
    loadAnswered(R"({"services":{"a":true,"b":false,"c":1,"d":0,"e":"true","f":[],"g":{}}})");
    EXPECT_TRUE(service->serviceEnabled("a"));
    EXPECT_FALSE(service->serviceEnabled("b"));
    EXPECT_TRUE(service->serviceEnabled("c"));
    for (const auto* name : {"d", "e", "f", "g", "none"}) EXPECT_FALSE(service->serviceEnabled(name)) << name;
}

TEST_F(VLConfigServiceTest, AMissingIntegerIsTheDefault) {
    loadAnswered(kDocument);
    EXPECT_EQ(service->integerForService(VLCONFIGSERVICEINBOX, "sync_time_limit_s", 5), 30);
    EXPECT_EQ(service->integerForService("none", "sync_time_limit_s", 5), 5);
    EXPECT_EQ(service->integerForService(VLCONFIGSERVICEINBOX, "none", 5), 5);
    EXPECT_EQ(service->integerForService(VLCONFIGSERVICEINBOX, "text", 5), 5);
    EXPECT_EQ(service->integerForService(VLCONFIGSERVICEINBOX, "flag", 5), 1);
    EXPECT_EQ(service->integerForService(VLCONFIGSERVICEINBOX, "half", 5), 2);
}

TEST_F(VLConfigServiceTest, ObjectsAndNumbersAreReturnedUnchanged) {
    loadAnswered(kDocument);
    EXPECT_EQ(service->objectForService(VLCONFIGSERVICEINBOX, "text", 7), Value("30"));
    EXPECT_EQ(service->objectForService(VLCONFIGSERVICEINBOX, "none", "default"), Value("default"));
    EXPECT_EQ(service->numberForService(VLCONFIGSERVICEINBOX, "half", 7), Value(2.5));
    EXPECT_EQ(service->numberForService(VLCONFIGSERVICEINBOX, "text", 7), Value(7));
}

TEST_F(VLConfigServiceTest, EveryServiceIsOffBeforeTheFirstLoad) {
    EXPECT_EQ(service->configDictonary(), nullptr);
    EXPECT_FALSE(service->serviceEnabled(VLCONFIGSERVICEGEO));
    EXPECT_FALSE(service->serviceConfig(VLCONFIGSERVICEGEO));
    EXPECT_EQ(service->integerForService(VLCONFIGSERVICEINBOX, "sync_time_limit_s", 30), 30);
}

TEST_F(VLConfigServiceTest, ABodyThatIsNoObjectLeadsToTheCache) {
    loadAnswered(kDocument);
    for (const auto& body : bodiesThatAreNoObject()) {
        calls = 0;
        service->loadConfigWithCompletion(handler());
        session().answerData(kPath, 200, body.bytes);
        EXPECT_EQ(calls, 1) << body.name;
        EXPECT_EQ(loaded, LoadStatus::Cached) << body.name;
        EXPECT_TRUE(service->serviceEnabled(VLCONFIGSERVICEGEO)) << body.name;
    }
}

TEST_F(VLConfigServiceTest, SectionsOfAnotherKindReadAsAbsent) {
    for (const std::string value : {"[]", "7", "null", "\"text\"", "true", "[[{}]]"}) {
        EXPECT_EQ(loadAnswered(R"({"services":)" + value + R"(,"configs":)" + value + "}"), LoadStatus::Fetched);
        EXPECT_FALSE(service->serviceEnabled("beacon")) << value;
        EXPECT_FALSE(service->serviceConfig("beacon")) << value;
        EXPECT_EQ(service->objectForService("beacon", "key", "default"), Value("default")) << value;
        EXPECT_EQ(cache(), *service->configDictonary()) << value;
    }
}

TEST_F(VLConfigServiceTest, AServicesConfigurationOfAnotherKindReadsAsAbsent) {
    for (const std::string value : {"[]", "7", "null", "\"text\"", "true", "[[{}]]"}) {
        EXPECT_EQ(loadAnswered(R"({"configs":{"beacon":)" + value + "}}"), LoadStatus::Fetched);
        EXPECT_FALSE(service->serviceConfig("beacon")) << value;
        EXPECT_EQ(service->integerForService("beacon", "key", 5), 5) << value;
        EXPECT_EQ(cache(), *service->configDictonary()) << value;
    }
}

TEST_F(VLConfigServiceTest, AValueThatIsNoNumberIsTheDefault) {
    for (const std::string value : {"[]", "null", "\"7\"", "{}", "[[7]]"}) {
        EXPECT_EQ(loadAnswered(R"({"configs":{"beacon":{"key":)" + value + "}}}"), LoadStatus::Fetched);
        EXPECT_EQ(service->integerForService("beacon", "key", 5), 5) << value;
        EXPECT_EQ(service->numberForService("beacon", "key", 2.5), Value(2.5)) << value;
    }
}

TEST_F(VLConfigServiceTest, ANumberOutOfRangeIsClamped) {
    loadAnswered(R"({"configs":{"beacon":{"great":1e300,"least":-1e300,"unsigned":18446744073709551615}}})");
    EXPECT_EQ(service->integerForService("beacon", "great", 5), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(service->integerForService("beacon", "least", 5), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(service->integerForService("beacon", "unsigned", 5), std::numeric_limits<std::int64_t>::max());
}

TEST_F(VLConfigServiceTest, ADeeplyNestedDocumentIsCachedWhole) {
    for (const int levels : {200, 510}) {
        const auto document = R"({"configs":{"beacon":)" + nestedJSON(levels, R"({"a":)", "1", "}") + "}}";
        EXPECT_EQ(loadAnswered(document), LoadStatus::Fetched) << levels;
        service = makeService();
        EXPECT_EQ(loadOffline(), LoadStatus::Cached) << levels;
        EXPECT_EQ(*service->configDictonary(), Value::parse(document).get_ref<const Dictionary&>()) << levels;
    }
}

TEST_F(VLConfigServiceTest, ADocumentNestedTooDeepLeadsToTheCache) {
    loadAnswered(kDocument);
    const auto document = R"({"configs":{"beacon":)" + nestedJSON(511, R"({"a":)", "1", "}") + "}}";
    EXPECT_EQ(loadAnswered(document), LoadStatus::Cached);
    EXPECT_TRUE(service->serviceEnabled(VLCONFIGSERVICEGEO));
}

TEST_F(VLConfigServiceTest, TheLastOfDuplicateKeysCounts) {
    loadAnswered(R"({"services":{"beacon":false,"beacon":true}})");
    EXPECT_TRUE(service->serviceEnabled("beacon"));
}

TEST_F(VLConfigServiceTest, MalformedCacheCountsAsMissing) {
    for (const auto* text : {"", "garbage", "<plist><array/></plist>", "bplist00 and no more"}) {
        writeCache(text);
        EXPECT_EQ(loadOffline(), LoadStatus::Unavailable) << text;
        EXPECT_TRUE(NSFileManager::fileExistsAtPath(documentsPath("VLConfig.plist.corrupt")));
    }
}

TEST_F(VLConfigServiceTest, OversizedConfigurationLeadsToTheCache) {
    loadAnswered(kDocument);
    std::string list = "1";
    for (int i = 1; i < 25'000; ++i) list += ",1";
    EXPECT_EQ(loadAnswered("{\"list\":[" + list + "]}"), LoadStatus::Cached);
    EXPECT_TRUE(service->serviceEnabled(VLCONFIGSERVICEGEO));
}

TEST_F(VLConfigServiceTest, AConfigurationThatCannotBeCachedIsUsed) {
    ASSERT_TRUE(NSFileManager::createDirectoryAtPath(documentsPath("VLConfig.plist/occupied")));
    EXPECT_EQ(loadAnswered(kDocument), LoadStatus::Fetched);
    EXPECT_TRUE(service->serviceEnabled(VLCONFIGSERVICEGEO));
}

TEST_F(VLConfigServiceTest, AFailedLoadWithoutACacheClearsTheConfiguration) {
    loadAnswered(kDocument);
    ASSERT_TRUE(NSFileManager::moveItemAtPath(documentsPath("VLConfig.plist"), documentsPath("away")));
    EXPECT_EQ(loadOffline(), LoadStatus::Unavailable);
    EXPECT_EQ(service->configDictonary(), nullptr);
}

TEST_F(VLConfigServiceTest, TheHandlerRunsOnTheQueueOfTheHTTPLayer) {
    bool wasMain = true;
    service->loadConfigWithCompletion([&](auto) { wasMain = phone().mainQueue()->isCurrent(); });
    session().answer(kPath, 200, kDocument);
    EXPECT_FALSE(wasMain);
}

TEST_F(VLConfigServiceTest, ADestroyedServiceStillCallsTheHandler) {
    service->loadConfigWithCompletion(handler());
    service.reset();
    session().answer(kPath, 200, kDocument);
    EXPECT_EQ(calls, 1);
}

TEST_F(VLConfigServiceTest, AReaderSeesOneWholeDocument) {
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

#include "Tests/EndToEnd/EndToEndTest.h"

namespace vorlane {

namespace {

class LibraryAgainstServiceTest : public EndToEndTest {
protected:
    LibraryAgainstServiceTest() {
        startPhone();
        launch();
        phone->settle();
    }

    std::size_t stored(const std::string& name) const { return service.get(name)[name].size(); }

    void addFault(const std::string& endpoint, const std::string& kind, int count = 3) {
        service.post("faults", Dictionary{{"endpoint", endpoint}, {"kind", kind}, {"count", count}});
    }
};

TEST_F(LibraryAgainstServiceTest, StartUpFetchesConfigurationAndRequestsAToken) {
    EXPECT_EQ(service.requests("config").size(), 1U);
    EXPECT_EQ(countLog("Successfully loaded config from remote server"), 1);
    EXPECT_EQ(phone->events("registerForRemoteNotifications").size(), 1U);
    ASSERT_EQ(phone->events("minimumBackgroundFetchInterval").size(), 1U);
    EXPECT_EQ(phone->events("minimumBackgroundFetchInterval")[0].at("seconds"), Value(86400.0));
}

TEST_F(LibraryAgainstServiceTest, SessionsAreReportedWithTheirLengths) {
    state("active");
    const auto start = lastPayload("sessionStart");
    EXPECT_EQ(start["app_key"], Value(appKey()));
    phone->perform({{"do", "advance"}, {"seconds", 12.7}});
    state("background");
    EXPECT_EQ(lastPayload("sessionEnd")["session_length"], Value(12));
    EXPECT_EQ(lastPayload("sessionEnd")["sid"], start["sid"]);
    EXPECT_EQ(stored("sessions"), 2U);
}

TEST_F(LibraryAgainstServiceTest, EveryOperationWorksByItsLabelledName) {
    const auto before = phone->call("trackingId");
    EXPECT_TRUE(before.is_string());
    EXPECT_EQ(phone->call("appKey"), Value(appKey()));
    EXPECT_TRUE(phone->call("deviceId").is_string());
    EXPECT_EQ(phone->call("deviceToken"), Value());
    EXPECT_EQ(phone->call("sharedInstance"), Value());

    phone->call("setPhash:", {"hash"});
    EXPECT_EQ(phone->call("phash"), Value("hash"));
    phone->call("setPhash:", {nullptr});
    EXPECT_EQ(phone->call("phash"), Value());

    phone->call("registerEventWithType:label:", {"a", "b"});
    EXPECT_EQ(lastPayload("registerEvent")["event_label"], Value("b"));
    phone->call("registerEventWithType:label:phash:", {"a", nullptr, "p"});
    EXPECT_EQ(lastPayload("registerEvent")["phash"], Value("p"));
    phone->call("registerEventWithType:data:", {"a", Dictionary{{"k", 1}}});
    EXPECT_EQ(lastPayload("registerEvent")["event_label"], Value(Dictionary{{"k", 1}}));
    phone->call("registerEventWithType:data:phash:", {"a", Dictionary{{"k", 2}}, "q"});
    EXPECT_EQ(lastPayload("registerEvent")["phash"], Value("q"));
    EXPECT_EQ(stored("events"), 4U);

    phone->call("setTag:value:type:completionHandler:", {"size", "42", 1});
    EXPECT_EQ(lastResult(), Value(Array{nullptr}));
    phone->call("getTag:completionHandler:", {"size"});
    EXPECT_EQ(lastResult(), Value(Array{"42", nullptr}));
    const Value tag = Dictionary{{"name", "colour"}, {"value", "red"}, {"type", "string"}};
    phone->call("batchSetTags:completionHandler:", Array(1, Value(Array(1, tag))));
    EXPECT_EQ(lastResult(), Value(Array{nullptr}));
    EXPECT_EQ(stored("tags"), 2U);
    phone->call("deleteAllTagsWithCompletionHandler:");
    EXPECT_EQ(lastResult(), Value(Array{nullptr}));
    EXPECT_EQ(stored("tags"), 0U);

    phone->call("setTrackingId:", {"anna"});
    EXPECT_EQ(lastPayload("changeTrackingId")["prev_tracking_id"], before);
    EXPECT_EQ(phone->call("trackingId"), Value("anna"));

    phone->call("setContainer:withContainerVersion:withContainerVlSdkVersion:", {"N", "V", "S"});
    EXPECT_EQ(phone->call("addCommonJsonData:", {Dictionary{{"own", 1}}})["lv"], Value("2.0.1-N-V"));
    EXPECT_EQ(phone->call("getURLs")["eventsUrl"], Value(service.origin()));
    phone->call("setURLs:", {Dictionary{{"eventsUrl", "http://127.0.0.1:9/"}}});
    EXPECT_EQ(phone->call("getURLs")["eventsUrl"], Value("http://127.0.0.1:9/"));
    for (const auto& result : phone->events("result")) EXPECT_EQ(result.at("main"), Value(true));
}

TEST_F(LibraryAgainstServiceTest, HandlersMayBeOmitted) {
    phone->perform({{"do", "call"},
                    {"op", "setTag:value:type:completionHandler:"},
                    {"args", Array{"a", "1", 0}},
                    {"handler", false}});
    phone->settle();
    EXPECT_TRUE(phone->events("result").empty());
    EXPECT_EQ(stored("tags"), 1U);
}

TEST_F(LibraryAgainstServiceTest, InvalidAndTruncatedAnswersAreErrors) {
    for (const auto* kind : {"garbage", "truncate", "drop"}) {
        addFault("getTag", kind);
        phone->call("getTag:completionHandler:", {"size"});
        const auto result = lastResult();
        ASSERT_EQ(result.size(), 2U) << kind;
        EXPECT_TRUE(result[0].is_null()) << kind;
        EXPECT_EQ(result[1]["domain"], Value("NSURLErrorDomain")) << kind;
        service.remove("faults");
    }
}

TEST_F(LibraryAgainstServiceTest, ErrorStatusesAreErrorsWithTheirCode) {
    service.post("faults", Dictionary{{"endpoint", "getTag"}, {"kind", "status"}, {"status", 503}});
    phone->call("getTag:completionHandler:", {"size"});
    EXPECT_EQ(lastResult()[1]["code"], Value(503));
    EXPECT_EQ(lastResult()[1]["domain"], Value("vorlane.sdk.network"));
}

TEST_F(LibraryAgainstServiceTest, BrokenConfigurationsKeepTheCachedConfiguration) {
    for (const auto* kind : {"garbage", "truncate"}) {
        addFault("config", kind);
        phone->takeEvents();
        launch();
        phone->settle();
        EXPECT_EQ(countLog("Couldn't fetch config from remote server, config loaded from local cache instead."), 1)
            << kind;
        service.remove("faults");
    }
}

TEST_F(LibraryAgainstServiceTest, ExpiredRequestsAreReportedOnce) {
    service.post("faults", Dictionary{{"endpoint", "getTag"}, {"kind", "delay"}, {"seconds", 60}});
    phone->call("getTag:completionHandler:", {"size"});
    service.get("requests?endpoint=getTag&waitFor=1&timeout=20");
    phone->takeEvents();
    phone->perform({{"do", "expireBackgroundTasks"}});
    const auto result = lastResult();
    EXPECT_EQ(result[1]["code"], Value(-999));
    EXPECT_EQ(phone->events("result").size(), 1U);
    EXPECT_EQ(countLog("Network background task with id"), 1);
    EXPECT_EQ(countLog("RSPN"), 1);
    EXPECT_EQ(phone->perform({{"do", "query"}, {"what", "backgroundTasks"}}), Value(Array{}));
}

TEST_F(LibraryAgainstServiceTest, QuittingDuringARequestIsQuick) {
    service.post("faults", Dictionary{{"endpoint", "*"}, {"kind", "delay"}, {"seconds", 60}});
    for (int i = 0; i < 20; ++i) phone->call("registerEventWithType:label:", {"a", "b"});
    EXPECT_EQ(phone->quit(), 0);
}

TEST_F(LibraryAgainstServiceTest, IdentitiesSurviveARestart) {
    const auto device = phone->call("deviceId");
    const auto user = phone->call("trackingId");
    EXPECT_EQ(phone->end(), 0);
    startPhone();
    EXPECT_EQ(phone->call("deviceId"), device);
    EXPECT_EQ(phone->call("trackingId"), user);
    EXPECT_EQ(phone->call("appKey"), Value(appKey()));
}

TEST_F(LibraryAgainstServiceTest, KillsAtAnyMomentLeaveReadableSettings) {
    const auto device = phone->call("deviceId");
    for (int round = 0; round < 20; ++round) {
        for (int line = 0; line < 3; ++line) phone->call("setPhash:", {"hash" + std::to_string(round)});
        // Killed while more changes are queued in its input.
        phone->send(R"({"do":"call","op":"setPhash:","args":["a"]})");
        phone->send(R"({"do":"call","op":"setTrackingId:","args":["user"]})");
        phone->kill(9);
        phone->wait();
        startPhone();
        ASSERT_EQ(phone->call("deviceId"), device) << round;
        ASSERT_FALSE(std::filesystem::exists(path("phone/VLLibSettings.plist.corrupt")));
    }
}

}  // namespace

}  // namespace vorlane

#include "Tests/Simulator/PhoneProgramTest.h"

namespace vorlane {

namespace {

class PhoneProgramCommandsTest : public PhoneProgramTest {};

Dictionary backgroundTask(const char* action, const Value& name, const Value& identifier) {
    return {{"event", "backgroundTask"}, {"action", action}, {"name", name}, {"identifier", identifier}};
}

TEST_F(PhoneProgramCommandsTest, LaunchStartsTheLibraryAndReportsItsRequests) {
    launch();
    EXPECT_EQ(countLog("Vorlane SDK initialised with app key: " + appKey()), 1);
    EXPECT_EQ(phone->events("registerForRemoteNotifications").size(), 1U);
    const auto intervals = phone->events("minimumBackgroundFetchInterval");
    ASSERT_EQ(intervals.size(), 1U);
    EXPECT_EQ(intervals[0], (Dictionary{{"event", "minimumBackgroundFetchInterval"}, {"seconds", 86400.0}}));
    EXPECT_EQ(phone->call("appKey"), Value(appKey()));
}

TEST_F(PhoneProgramCommandsTest, LaunchStartsASessionOnlyInTheForeground) {
    launch({{"state", "background"}});
    EXPECT_EQ(countLog("RQST0002"), 0);
    launch({{"state", "active"}});
    EXPECT_EQ(countLog("RQST"), 3);
}

TEST_F(PhoneProgramCommandsTest, LaunchPassesLaunchOptions) {
    launch({{"launchOptions", Dictionary{{"remote", Dictionary{{"p", "hash"}}}}}});
    EXPECT_EQ(phone->call("phash"), Value("hash"));
    launch({{"launchOptions", nullptr}});
    EXPECT_EQ(phone->call("phash"), Value());
    launch({{"launchOptions", Dictionary{{"local", Dictionary{{"userInfo", Dictionary{{"p", "other"}}}}}}}});
    EXPECT_EQ(phone->call("phash"), Value("other"));
    launch({{"launchOptions", Dictionary{}}});
    EXPECT_EQ(phone->call("phash"), Value());
}

TEST_F(PhoneProgramCommandsTest, LaunchByLabelledNameIsEquivalent) {
    phone->call("initialiseSDKWithApplication:launchOptions:sdkOptions:",
                {Dictionary{{"remote", Dictionary{{"p", "hash"}}}}, Dictionary{{"appKey", appKey()}}});
    EXPECT_EQ(phone->call("phash"), Value("hash"));
    EXPECT_EQ(phone->call("appKey"), Value(appKey()));
}

TEST_F(PhoneProgramCommandsTest, PresetsLogAtTheirLevelByDefault) {
    const auto hasDebugLines = [this](Dictionary options, Dictionary line) {
        options.emplace("appKey", appKey());
        line.insert({{"do", "launch"}, {"options", std::move(options)}});
        phone->perform(std::move(line));
        phone->takeEvents();
        phone->perform({{"do", "log"}, {"message", "fine"}, {"level", 4}});
        return countLog("fine") == 1;
    };
    EXPECT_FALSE(hasDebugLines({}, {{"preset", "default"}}));
    EXPECT_TRUE(hasDebugLines({}, {{"preset", "development"}}));
    EXPECT_TRUE(hasDebugLines({{"logLevel", 4}}, {{"preset", "default"}}));
    EXPECT_FALSE(hasDebugLines({{"logLevel", 0}}, {{"preset", "development"}}));
    startPhone({"--log-level", "3"});
    EXPECT_FALSE(hasDebugLines({}, {{"preset", "development"}}));
    EXPECT_TRUE(hasDebugLines({{"logLevel", 4}}, {}));
}

TEST_F(PhoneProgramCommandsTest, EveryStateIsReportedToTheLibrary) {
    launch();
    const auto linesOf = [this](const char* state) {
        phone->takeEvents();
        phone->perform({{"do", "state"}, {"to", state}});
        return std::vector<long>{countLog("App Entering Foreground."), countLog("App Entering Background."),
                                 countLog("App Terminated.")};
    };
    EXPECT_EQ(linesOf("active"), (std::vector<long>{1, 0, 0}));
    EXPECT_EQ(linesOf("inactive"), (std::vector<long>{0, 0, 0}));
    EXPECT_EQ(linesOf("background"), (std::vector<long>{0, 1, 0}));
    EXPECT_EQ(linesOf("foreground"), (std::vector<long>{0, 0, 0}));
    EXPECT_EQ(linesOf("terminate"), (std::vector<long>{0, 0, 1}));
}

TEST_F(PhoneProgramCommandsTest, RequestsHoldABackgroundTaskUntilExpiry) {
    phone->call("getTag:completionHandler:", {"size"});
    const auto open = query("backgroundTasks");
    ASSERT_EQ(open.size(), 1U);
    phone->perform({{"do", "expireBackgroundTasks"}});
    phone->settle();
    const auto events = phone->events("backgroundTask");
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[0], backgroundTask("begin", open[0]["name"], open[0]["identifier"]));
    EXPECT_EQ(events[1], backgroundTask("expired", open[0]["name"], open[0]["identifier"]));
    EXPECT_EQ(events[2], backgroundTask("end", open[0]["name"], open[0]["identifier"]));
    EXPECT_EQ(query("backgroundTasks"), Value(Array{}));
}

TEST_F(PhoneProgramCommandsTest, ResultsNameTheirLineAndTheHandlersArguments) {
    const auto answer = phone->answerTo({{"do", "call"},
                                         {"id", Array{"an", 1}},
                                         {"op", "setTag:value:type:completionHandler:"},
                                         {"args", Array{"size", "42", 1}}});
    EXPECT_EQ(answer.at("reply"), Value(Array{"an", 1}));
    EXPECT_TRUE(phone->events("result").empty());
    server.close();
    phone->settle();
    const auto results = phone->events("result");
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].at("id"), Value(Array{"an", 1}));
    EXPECT_EQ(results[0].at("op"), Value("setTag:value:type:completionHandler:"));
    EXPECT_EQ(results[0].at("main"), Value(true));
    ASSERT_EQ(results[0].at("values").size(), 1U);
    const auto& error = results[0].at("values")[0];
    EXPECT_EQ(error["domain"], Value("NSURLErrorDomain"));
    EXPECT_TRUE(error["code"].is_number_integer());
    EXPECT_TRUE(error["description"].is_string());
    EXPECT_TRUE(error["userInfo"].is_object());
}

TEST_F(PhoneProgramCommandsTest, SettlingFailsWhileARequestIsInFlight) {
    phone->call("registerEventWithType:label:", {"a", "b"});
    const auto answer = phone->answerTo({{"do", "settle"}, {"timeout", 0.05}});
    EXPECT_EQ(answer.at("error"), Value("not settled in time"));
    server.close();
    phone->settle();
}

TEST_F(PhoneProgramCommandsTest, OtherCommandsDoNotWaitForRequests) {
    phone->call("registerEventWithType:label:", {"a", "b"});
    EXPECT_EQ(query("time"), Value(1'700'000'000.0));
    EXPECT_EQ(phone->quit(), 0);
}

TEST_F(PhoneProgramCommandsTest, QuitCancelsOpenRequestsAndRunsTheirHandlers) {
    phone->call("getTag:completionHandler:", {"size"});
    phone->perform({{"do", "quit"}});
    EXPECT_EQ(phone->end(), 0);
    const auto results = phone->events("result");
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].at("values")[1]["code"], Value(-999));
}

TEST_F(PhoneProgramCommandsTest, EndOfInputQuits) {
    phone->call("getTag:completionHandler:", {"size"});
    EXPECT_EQ(phone->end(), 0);
    EXPECT_EQ(phone->events("result").size(), 1U);
}

TEST_F(PhoneProgramCommandsTest, LinesAfterQuitAreIgnored) {
    phone->send(R"({"do":"quit"})");
    phone->send(R"({"do":"call","op":"setPhash:","args":["hash"]})");
    phone->end();
    startPhone();
    EXPECT_EQ(phone->call("phash"), Value());
}

TEST_F(PhoneProgramCommandsTest, SettingsAreTheWholeStoredDictionary) {
    phone->call("setPhash:", {"hash"});
    const auto device = phone->call("deviceId");
    const auto settings = query("settings");
    ASSERT_TRUE(settings.is_object());
    EXPECT_NE(settings.dump().find("hash"), std::string::npos);
    EXPECT_NE(settings.dump().find(device.get<std::string>()), std::string::npos);
}

TEST_F(PhoneProgramCommandsTest, UnnamedEndpointsAreTheProductionEndpoints) {
    const auto service = query("urls");
    phone->perform({{"do", "setURLs"}, {"urls", Dictionary{{"mdnUrl", "http://127.0.0.1:9/x"}}}});
    const auto urls = query("urls");
    EXPECT_EQ(urls["mdnUrl"], Value("http://127.0.0.1:9/x"));
    EXPECT_EQ(urls.size(), 16U);
    EXPECT_TRUE(urls["eventsUrl"].get<std::string>().starts_with("https://"));
    EXPECT_TRUE(service["eventsUrl"].get<std::string>().starts_with(server.origin()));
}

TEST_F(PhoneProgramCommandsTest, TheRealClockCannotBeAdvanced) {
    startPhone({"--clock", "real"});
    EXPECT_GT(query("time").get<double>(), 1'700'000'000.0);
    EXPECT_TRUE(phone->answerTo({{"do", "advance"}, {"seconds", 1}}).contains("error"));
}

TEST_F(PhoneProgramCommandsTest, VirtualClockStartsAtTheGivenTime) {
    startPhone({"--clock", "virtual=12.5"});
    EXPECT_EQ(query("time"), Value(12.5));
    startPhone({"--clock", "virtual=-3e9"});
    EXPECT_EQ(query("time"), Value(-3e9));
}

}  // namespace

}  // namespace vorlane

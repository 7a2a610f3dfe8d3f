#include <csignal>
#include <fstream>

#include "Tests/EndToEnd/EndToEndTest.h"

namespace vorlane {

namespace {

class PhoneLinesTest : public EndToEndTest {
protected:
    PhoneLinesTest() { startPhone(); }

    void expectRefused(const std::string& line, const Value& id = nullptr) {
        const auto answer = phone->answerToText(line);
        EXPECT_TRUE(answer.contains("error")) << line.substr(0, 80);
        EXPECT_EQ(answer.at("reply"), id) << line.substr(0, 80);
    }

    static int statusOf(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), VORLANE_PHONE);
        support::ChildProcess process(arguments);
        process.closeInput();
        while (process.readLine()) {
        }
        return process.wait();
    }
};

TEST_F(PhoneLinesTest, LinesWithoutAnObjectAreErrors) {
    for (const auto* line :
         {"", "garbage", "[]", "1", "null", "\"launch\"", "{", "{\"do\":\"query\"", "{}{}", "{\"do\":\"\xff\"}"}) {
        expectRefused(line);
    }
    expectRefused(std::string("{\"do\":\"settle\"}\0", 16));
    expectRefused(std::string(100'000, '['));
    expectRefused(std::string(5'000'000, 'x'));
    EXPECT_EQ(phone->perform({{"do", "query"}, {"what", "time"}}), Value(1'700'000'000.0));
}

TEST_F(PhoneLinesTest, UnknownCommandsAndUnusableFieldsAreErrors) {
    for (const auto* line : {R"({"id":7})",
                             R"({"id":7,"do":"dance"})",
                             R"({"id":7,"do":3})",
                             R"({"id":7,"do":"state"})",
                             R"({"id":7,"do":"state","to":"sleep"})",
                             R"({"id":7,"do":"state","to":1})",
                             R"({"id":7,"do":"call"})",
                             R"({"id":7,"do":"call","op":"none"})",
                             R"({"id":7,"do":"call","op":"setPhash:"})",
                             R"({"id":7,"do":"call","op":"setPhash:","args":[1]})",
                             R"({"id":7,"do":"call","op":"setPhash:","args":{}})",
                             R"({"id":7,"do":"call","op":"trackingId","handler":"yes"})",
                             R"({"id":7,"do":"launch","preset":"odd"})",
                             R"({"id":7,"do":"launch","options":[]})",
                             R"({"id":7,"do":"launch","options":{"appKey":5}})",
                             R"({"id":7,"do":"launch","state":"odd"})",
                             R"({"id":7,"do":"launch","launchOptions":{"odd":1}})",
                             R"({"id":7,"do":"advance"})",
                             R"({"id":7,"do":"advance","seconds":-1})",
                             R"({"id":7,"do":"advance","seconds":"1"})",
                             R"({"id":7,"do":"settle","timeout":"1"})",
                             R"({"id":7,"do":"query"})",
                             R"({"id":7,"do":"query","what":"weather"})",
                             R"({"id":7,"do":"setURLs"})",
                             R"({"id":7,"do":"setURLs","urls":{"odd":"http://h"}})",
                             R"({"id":7,"do":"setURLs","urls":{"mdnUrl":"no url"}})",
                             R"({"id":7,"do":"log"})",
                             R"({"id":7,"do":"log","message":1,"level":1})",
                             R"({"id":7,"do":"helper","name":"none"})",
                             R"({"id":7,"do":"helper","name":"vl_md5"})",
                             R"({"id":7,"do":"helper","name":"vl_md5","args":[1]})"}) {
        expectRefused(line, 7);
    }
}

TEST_F(PhoneLinesTest, IdsOfAnyTypeAreEchoed) {
    for (const auto* id : {"1", "\"text\"", "null", "[1]", "{\"a\":true}"}) {
        const auto answer = phone->answerToText(std::string(R"({"do":"query","what":"time","id":)") + id + "}");
        EXPECT_EQ(answer.at("reply"), Value::parse(id));
    }
}

TEST_F(PhoneLinesTest, ExceptionsAreReportedByNameAndReason) {
    for (const auto& key : {appKey().substr(1), appKey() + "x", std::string()}) {
        const auto answer = phone->answerTo({{"do", "launch"}, {"options", Dictionary{{"appKey", key}}}});
        ASSERT_TRUE(answer.contains("exception"));
        EXPECT_EQ(answer.at("exception")["name"], Value("Missing / Invalid Project Key"));
        EXPECT_NE(answer.at("exception")["reason"].get<std::string>().find("found key \"" + key + "\"."),
                  std::string::npos);
    }
    const auto answer =
        phone->answerTo({{"do", "call"}, {"op", "setTag:value:type:completionHandler:"}, {"args", Array{"a", "b", 3}}});
    EXPECT_EQ(answer.at("exception")["name"], Value("Invalid Tag Type Exception"));
}

TEST_F(PhoneLinesTest, AppKeyMayComeFromTheInfoDictionary) {
    std::ofstream(path("info.json")) << Value(Dictionary{{"VL_App_Key", appKey()}}).dump();
    startPhone({"--info", path("info.json")});
    phone->perform({{"do", "launch"}});
    EXPECT_EQ(phone->call("appKey"), Value(appKey()));
}

TEST_F(PhoneLinesTest, LogLinesAreEventsWithTheirPayload) {
    phone->perform({{"do", "log"}, {"message", "hello"}, {"payload", Dictionary{{"a", 1}}}, {"level", 1}});
    phone->perform({{"do", "log"}, {"message", "too fine"}, {"level", 4}});
    const auto lines = phone->events("log");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].at("level"), Value(1));
    EXPECT_EQ(lines[0].at("message"), Value("hello"));
    EXPECT_EQ(lines[0].at("payload"), Value(Dictionary{{"a", 1}}));
}

TEST_F(PhoneLinesTest, LogLevelDefaultsToTheCommandLines) {
    startPhone({"--log-level", "4"});
    launch();
    EXPECT_GT(countLog("RQST0001"), 0);
}

TEST_F(PhoneLinesTest, VirtualClockMovesOnlyWithAdvance) {
    phone->perform({{"do", "advance"}, {"seconds", 90.5}});
    EXPECT_EQ(phone->perform({{"do", "query"}, {"what", "time"}}), Value(1'700'000'090.5));
    EXPECT_EQ(phone->perform({{"do", "query"}, {"what", "timers"}}), Value(Array{}));
}

TEST_F(PhoneLinesTest, QueriesAndHelpersReturnValues) {
    EXPECT_EQ(phone->perform({{"do", "query"}, {"what", "documents"}}), Value(path("phone")));
    EXPECT_EQ(phone->perform({{"do", "query"}, {"what", "settings"}}), Value(Dictionary{}));
    EXPECT_EQ(phone->perform({{"do", "query"}, {"what", "urls"}})["mdnUrl"],
              Value(service.origin() + "/message/analytics"));
    const auto constants = phone->perform({{"do", "query"}, {"what", "constants"}});
    EXPECT_EQ(constants["VorlaneVersionNumber"], Value(28.0));
    EXPECT_EQ(constants["VL_NOTIFICATION_KEY_PHASH"], Value("p"));
    const auto help = [this](const std::string& name, const Value& argument) {
        return phone->perform({{"do", "helper"}, {"name", name}, {"args", Array{argument}}});
    };
    EXPECT_EQ(help("logLevelToString:", 2), Value("WARN"));
    EXPECT_EQ(help("stringToLogLevel:", "info"), Value(4));
    EXPECT_EQ(help("vl_md5", ""), Value("d41d8cd98f00b204e9800998ecf8427e"));
    EXPECT_EQ(help("authorisationStatusToString:", -1), Value("prompted"));
    EXPECT_EQ(help("stringToAlertStyle:", "banner"), Value(1));
}

TEST_F(PhoneLinesTest, EndOfInputEndsItWithStatus0) {
    launch();
    EXPECT_EQ(phone->end(), 0);
}

TEST_F(PhoneLinesTest, WrongOptionsEndItWithStatus2) {
    EXPECT_EQ(statusOf({}), 2);
    EXPECT_EQ(statusOf({"--data-dir"}), 2);
    EXPECT_EQ(statusOf({"--odd", "1"}), 2);
    EXPECT_EQ(statusOf({"--data-dir", path("p"), "--clock", "odd"}), 2);
    EXPECT_EQ(statusOf({"--data-dir", path("p"), "--clock", "virtual=x"}), 2);
    EXPECT_EQ(statusOf({"--data-dir", path("p"), "--log-level", "5"}), 2);
    EXPECT_EQ(statusOf({"--data-dir", path("p"), "--service", "nowhere"}), 2);
    EXPECT_EQ(statusOf({"--data-dir", path("p"), "--info", path("none")}), 2);
    EXPECT_EQ(statusOf({"--data-dir", path("p"), "--clock", "real"}), 0);
}

TEST_F(PhoneLinesTest, DataFolderIsCreatedWithItsParents) {
    startPhone({"--data-dir", path("a/b/c")});
    phone->call("deviceId");
    EXPECT_TRUE(std::filesystem::exists(path("a/b/c/VLLibSettings.plist")));
}

TEST_F(PhoneLinesTest, AFileAsDataFolderLeavesEverythingInMemory) {
    std::ofstream(path("occupied")) << "x";
    startPhone({"--data-dir", path("occupied")});
    launch();
    EXPECT_EQ(phone->call("appKey"), Value(appKey()));
    const auto device = phone->call("deviceId");
    EXPECT_EQ(phone->call("deviceId"), device);
}

}  // namespace

}  // namespace vorlane

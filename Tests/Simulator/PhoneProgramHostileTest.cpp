#include <limits>
#include <map>

#include "Tests/Simulator/PhoneProgramTest.h"

namespace vorlane {

namespace {

class PhoneProgramHostileTest : public PhoneProgramTest {
protected:
    /// Expects any answer, and that the phone continues.
    void expectAnswered(const Dictionary& line) {
        const auto answer = phone->answerTo(line);
        const auto kinds = answer.count("value") + answer.count("exception") + answer.count("error");
        EXPECT_EQ(kinds, 1U) << Value(line).dump();
    }
};

/// One value of every type, and values at the limits.
Array hostileValues() {
    return {nullptr,
            true,
            0,
            -1,
            std::int64_t{std::numeric_limits<std::int64_t>::min()},
            std::uint64_t{std::numeric_limits<std::uint64_t>::max()},
            1e308,
            -1e308,
            0.5,
            "",
            "text",
            std::string("\0", 1),
            std::string(5000, 'x'),
            Array{},
            Array{nullptr, 1, "a"},
            Dictionary{},
            Dictionary{{"", nullptr}, {"a", Dictionary{{"b", Array{}}}}}};
}

TEST_F(PhoneProgramHostileTest, EveryFieldOfEveryCommandAcceptsAnyValue) {
    const std::map<std::string, std::vector<std::string>> fields = {
        {"launch", {"options", "preset", "launchOptions", "state"}},
        {"state", {"to"}},
        {"call", {"op", "args", "handler"}},
        {"setURLs", {"urls"}},
        {"log", {"message", "payload", "level"}},
        {"helper", {"name", "args"}},
        {"settle", {}},
        {"query", {"what"}},
        {"expireBackgroundTasks", {"odd"}},
    };
    for (const auto& [word, names] : fields) {
        expectAnswered({{"do", word}});
        for (const auto& name : names) {
            for (const auto& value : hostileValues()) {
                Dictionary line{{"do", word}};
                // The other fields are valid, so that this field is reached.
                if (word == "log") line.insert({{"message", "m"}, {"level", 1}});
                if (word == "call") line.insert({{"op", "setPhash:"}, {"args", Array{"p"}}});
                if (word == "helper") line.insert({{"name", "vl_md5"}, {"args", Array{"p"}}});
                line[name] = value;
                expectAnswered(line);
            }
        }
    }
    for (const auto& value : hostileValues()) expectAnswered({{"do", value}});
    EXPECT_TRUE(phone->perform({{"do", "query"}, {"what", "time"}}).is_number());
}

TEST_F(PhoneProgramHostileTest, EveryOperationAndHelperAcceptsAnyArguments) {
    const std::vector<std::string> operations = {"setURLs:",
                                                 "setTrackingId:",
                                                 "setPhash:",
                                                 "registerEventWithType:label:",
                                                 "registerEventWithType:label:phash:",
                                                 "registerEventWithType:data:",
                                                 "registerEventWithType:data:phash:",
                                                 "getTag:completionHandler:",
                                                 "setTag:value:type:completionHandler:",
                                                 "batchSetTags:completionHandler:",
                                                 "setContainer:withContainerVersion:withContainerVlSdkVersion:",
                                                 "addCommonJsonData:",
                                                 "initialiseSDKWithApplication:launchOptions:sdkOptions:"};
    const std::vector<std::string> helpers = {"logLevelToString:",
                                              "stringToLogLevel:",
                                              "vl_md5",
                                              "authorisationStatusToString:",
                                              "stringToAuthorisationStatus:",
                                              "notificationSettingToString:",
                                              "stringToNotificationSetting:",
                                              "alertStyleToString:",
                                              "stringToAlertStyle:"};
    for (const auto& value : hostileValues()) {
        for (const auto& operation : operations) {
            expectAnswered({{"do", "call"}, {"op", operation}, {"args", Array{value, value, value}}});
        }
        for (const auto& helper : helpers) {
            expectAnswered({{"do", "helper"}, {"name", helper}, {"args", Array{value}}});
        }
    }
    EXPECT_EQ(phone->quit(), 0);
}

TEST_F(PhoneProgramHostileTest, TimeMayMoveBeyondTheCalendar) {
    launch();
    server.close();
    for (const double seconds : {1e9, 1e12, 1e300}) {
        phone->perform({{"do", "advance"}, {"seconds", seconds}});
        for (const auto* state : {"active", "background"}) phone->perform({{"do", "state"}, {"to", state}});
        phone->settle();
    }
    startPhone({"--clock", "virtual=-1e300"});
    launch({{"state", "active"}});
    EXPECT_EQ(phone->quit(), 0);
}

TEST_F(PhoneProgramHostileTest, BytesThatAreNotUTF8AreRefused) {
    for (const auto* line : {"{\"do\":\"query\",\"what\":\"time\",\"id\":\"\xff\"}", "{\"do\":\"query\xc3\"}",
                             "\xef\xbb\xbf{}", "{\"do\":\"query\",\"what\":\"time\",\"id\":\"\\ud800\"}",
                             "{\"id\":1e999}", "{\"do\":\"query\",\"what\":\"time\",}", "{'do':'query'}", "\x7f"}) {
        const auto answer = phone->answerToText(line);
        EXPECT_TRUE(answer.contains("error")) << line;
        EXPECT_EQ(answer.at("reply"), Value()) << line;
    }
}

}  // namespace

}  // namespace vorlane

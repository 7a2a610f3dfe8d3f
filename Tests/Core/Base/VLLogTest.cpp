#include "Public/VLLog.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "Core/Base/VLNSLogger.h"
#include "Core/Base/VLOSLogger.h"
#include "Platform/NSException.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

constexpr VLLogLevel kLevels[] = {VLLogLevel::Off, VLLogLevel::Error, VLLogLevel::Warn, VLLogLevel::Info,
                                  VLLogLevel::Debug};

class VLLogTest : public SimulatedPhoneTest {
protected:
    explicit VLLogTest(SimulatedPhone::Options options = {}) : SimulatedPhoneTest(std::move(options)) {}
};

/// A phone of the platform generation without a system log.
class VLLogOldPhoneTest : public VLLogTest {
protected:
    VLLogOldPhoneTest() : VLLogTest({.systemVersion = 9.3}) {}
};

TEST(VLLogLevelTest, TheLevelsHaveTheirNames) {
    EXPECT_STREQ(VL_LOG_STRING_OFF, "OFF");
    EXPECT_STREQ(VL_LOG_STRING_ERROR, "ERROR");
    EXPECT_STREQ(VL_LOG_STRING_WARN, "WARN");
    EXPECT_STREQ(VL_LOG_STRING_INFO, "INFO");
    EXPECT_STREQ(VL_LOG_STRING_DEBUG, "DEBUG");
    const char* names[] = {"OFF", "ERROR", "WARN", "INFO", "DEBUG"};
    for (std::size_t i = 0; i < 5; ++i) EXPECT_STREQ(VLLog::logLevelToString(kLevels[i]), names[i]);
    EXPECT_STREQ(VLLog::logLevelToString(static_cast<VLLogLevel>(5)), "OFF");
}

TEST(VLLogLevelTest, StringsAreComparedExactlyAndUnknownOnesMeanDebug) {
    EXPECT_EQ(VLLog::stringToLogLevel("ERROR"), VLLogLevel::Error);
    EXPECT_EQ(VLLog::stringToLogLevel("WARN"), VLLogLevel::Warn);
    EXPECT_EQ(VLLog::stringToLogLevel("INFO"), VLLogLevel::Info);
    EXPECT_EQ(VLLog::stringToLogLevel("DEBUG"), VLLogLevel::Debug);
    for (const auto* text : {"info", "OFF", "", " INFO", "error"}) {
        EXPECT_EQ(VLLog::stringToLogLevel(text), VLLogLevel::Debug) << text;
    }
}

TEST_F(VLLogTest, ANewLogHasTheThresholdInfoAndOneSink) {
    VLLog log;
    EXPECT_EQ(log.logLevel(), VLLogLevel::Info);
    ASSERT_EQ(log.loggers().size(), 1U);
    EXPECT_TRUE(std::dynamic_pointer_cast<VLOSLogger>(log.loggers()[0]));
}

TEST_F(VLLogOldPhoneTest, ANewLogWritesToTheConsole) {
    VLLog log;
    ASSERT_EQ(log.loggers().size(), 1U);
    EXPECT_TRUE(std::dynamic_pointer_cast<VLNSLogger>(log.loggers()[0]));
}

TEST_F(VLLogTest, WaitingLinesAreWrittenAfterTheLogIsDestroyed) {
    const auto sink = std::make_shared<RecordingLogger>();
    {
        VLLog own;
        own.addLogger(sink);
        for (int i = 0; i < 100; ++i) own.logMessage("waits", std::nullopt, VLLogLevel::Info);
    }
    phone().settle();
    EXPECT_EQ(sink->count("waits", VLLogLevel::Info), 100);
}

TEST_F(VLLogTest, AMessageAboveTheThresholdIsDropped) {
    auto& shared = VLLog::sharedInstance();
    for (const auto threshold : kLevels) {
        for (const auto level : kLevels) {
            log().clear();
            shared.setLogLevel(threshold);
            shared.logMessage("message", std::nullopt, level);
            EXPECT_EQ(log().count("message", level), level <= threshold ? 1 : 0);
        }
    }
}

TEST_F(VLLogTest, AMessageOfLevel0PassesTheFilterOnly) {
    VLLog::sharedInstance().setLogLevel(VLLogLevel::Off);
    logMessage(VLLogLevel::Off, "nothing");
    logMessage(VLLogLevel::Error, "grave");
    EXPECT_EQ(log().lines().size(), 1U);
    EXPECT_TRUE(phone().systemLog().empty());
}

TEST_F(VLLogTest, SinksReceiveLinesInOrderOnAnotherThread) {
    class ThreadRecorder : public VLLogger {
    public:
        void logMessage(const std::string& message, const std::optional<Value>&, VLLogLevel) override {
            messages.push_back(message);
            thread = std::this_thread::get_id();
        }
        std::vector<std::string> messages;
        std::thread::id thread;
    };
    const auto recorder = std::make_shared<ThreadRecorder>();
    VLLog::sharedInstance().addLogger(recorder);
    std::vector<std::string> expected;
    for (int i = 0; i < 100; ++i) {
        expected.push_back("message " + std::to_string(i));
        logMessage(VLLogLevel::Error, expected.back());
    }
    EXPECT_EQ(log().lines().size(), 100U);
    EXPECT_EQ(recorder->messages, expected);
    EXPECT_NE(recorder->thread, std::this_thread::get_id());
}

TEST_F(VLLogTest, ASinkReceivesMessagePayloadAndLevelUnchanged) {
    const Value payload = Dictionary{{"a", Array{1, nullptr}}};
    VLLog::sharedInstance().logMessage("with", payload, VLLogLevel::Warn);
    VLLog::sharedInstance().logMessage("without", std::nullopt, VLLogLevel::Info);
    VLLog::sharedInstance().logMessage("null", Value(nullptr), VLLogLevel::Info);
    const auto lines = log().lines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].message, "with");
    EXPECT_EQ(lines[0].payload, payload);
    EXPECT_EQ(lines[0].level, VLLogLevel::Warn);
    EXPECT_EQ(lines[1].payload, std::nullopt);
    EXPECT_EQ(lines[2].payload, Value(nullptr));
}

TEST_F(VLLogTest, EachLineIsPassedToTheSinksInOrder) {
    class Named : public VLLogger {
    public:
        Named(std::string name, std::vector<std::string>& calls) : name_(std::move(name)), calls_(calls) {}
        void logMessage(const std::string& message, const std::optional<Value>&, VLLogLevel) override {
            calls_.push_back(name_ + message);
        }

    private:
        const std::string name_;
        std::vector<std::string>& calls_;
    };
    std::vector<std::string> calls;
    for (const auto* name : {"a", "b", "c"}) VLLog::sharedInstance().addLogger(std::make_shared<Named>(name, calls));
    logMessage(VLLogLevel::Error, "1");
    logMessage(VLLogLevel::Error, "2");
    phone().settle();
    EXPECT_EQ(calls, (std::vector<std::string>{"a1", "b1", "c1", "a2", "b2", "c2"}));
}

TEST_F(VLLogTest, NullAndUnknownSinksAreIgnored) {
    auto& shared = VLLog::sharedInstance();
    const auto before = shared.loggers();
    shared.addLogger(nullptr);
    shared.removeLogger(nullptr);
    shared.removeLogger(std::make_shared<RecordingLogger>());
    EXPECT_EQ(shared.loggers(), before);
}

TEST_F(VLLogTest, ARemovedSinkReceivesNoMoreLines) {
    const auto logger = std::make_shared<RecordingLogger>();
    VLLog::sharedInstance().addLogger(logger);
    logMessage(VLLogLevel::Error, "one");
    phone().settle();
    VLLog::sharedInstance().removeLogger(logger);
    logMessage(VLLogLevel::Error, "two");
    phone().settle();
    EXPECT_EQ(logger->lines().size(), 1U);
}

TEST_F(VLLogTest, AnExceptionOfASinkIsIgnored) {
    class ThrowingLogger : public VLLogger {
    public:
        void logMessage(const std::string&, const std::optional<Value>&, VLLogLevel) override {
            throw std::runtime_error("no");
        }
    };
    auto& shared = VLLog::sharedInstance();
    const auto last = std::make_shared<RecordingLogger>();
    shared.addLogger(std::make_shared<ThrowingLogger>());
    shared.addLogger(last);
    logMessage(VLLogLevel::Error, "one");
    logMessage(VLLogLevel::Error, "two");
    phone().settle();
    EXPECT_EQ(last->lines().size(), 2U);
}

TEST_F(VLLogTest, ASinkMayLogAndChangeTheSinks) {
    class BusyLogger : public VLLogger {
    public:
        void logMessage(const std::string& message, const std::optional<Value>&, VLLogLevel) override {
            if (message == "first") vorlane::logMessage(VLLogLevel::Error, "second");
            VLLog::sharedInstance().addLogger(std::make_shared<RecordingLogger>());
        }
    };
    VLLog::sharedInstance().addLogger(std::make_shared<BusyLogger>());
    logMessage(VLLogLevel::Error, "first");
    EXPECT_EQ(log().count("second", VLLogLevel::Error), 1);
}

TEST_F(VLLogTest, ManyThreadsMayLogAtOnce) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int line = 0; line < 50; ++line) logMessage(VLLogLevel::Info, "line");
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(log().count("line", VLLogLevel::Info), 200);
}

TEST_F(VLLogTest, LinesAfterTheShutdownAreDropped) {
    Platform::shutdown();
    logMessage(VLLogLevel::Error, "late");
    EXPECT_TRUE(phone().systemLog().empty());
}

TEST_F(VLLogTest, TheSystemLogReceivesEachLevelAsItsType) {
    for (const auto level : kLevels) logMessage(level, VLLog::logLevelToString(level));
    logMessage(static_cast<VLLogLevel>(4), "payload", Value(Dictionary{{"a", 1}}));
    phone().settle();
    const auto lines = phone().systemLog();
    ASSERT_EQ(lines.size(), 5U);
    const std::pair<int, std::string> expected[] = {
        {16, "ERROR"}, {0, "WARN"}, {1, "INFO"}, {2, "DEBUG"}, {2, "payload\n{\"a\":1}"}};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(lines[i].subsystem, "vorlane.sdk");
        EXPECT_EQ(lines[i].category, "VL");
        EXPECT_EQ(lines[i].type, expected[i].first);
        EXPECT_EQ(lines[i].text, expected[i].second);
    }
}

TEST_F(VLLogTest, LevelsOutside1To4AreNotWritten) {
    VLOSLogger system;
    VLNSLogger console;
    for (const auto level : {static_cast<VLLogLevel>(0), static_cast<VLLogLevel>(5)}) {
        system.logMessage("message", std::nullopt, level);
        console.logMessage("message", std::nullopt, level);
    }
    EXPECT_TRUE(phone().systemLog().empty());
    EXPECT_TRUE(phone().console().empty());
}

TEST_F(VLLogOldPhoneTest, OnlyAWarningIsWrittenToTheConsoleTwice) {
    for (const auto level : kLevels) logMessage(level, "message");
    logMessage(VLLogLevel::Info, "with payload", Value("detail"));
    phone().settle();
    EXPECT_EQ(phone().console(),
              (std::vector<std::string>{"vorlane.sdk [ERROR]: message", "vorlane.sdk [WARN]: message",
                                        "vorlane.sdk [ERROR]: message", "vorlane.sdk [INFO]: message",
                                        "vorlane.sdk [DEBUG]: message", "vorlane.sdk [INFO]: with payload\ndetail"}));
}

TEST_F(VLLogOldPhoneTest, Threshold2PassesErrorsAndWarningsOnly) {
    VLLog::sharedInstance().setLogLevel(VLLogLevel::Warn);
    for (const auto level : {VLLogLevel::Error, VLLogLevel::Warn, VLLogLevel::Info, VLLogLevel::Debug}) {
        logMessage(level, "message");
    }
    phone().settle();
    EXPECT_EQ(phone().console(),
              (std::vector<std::string>{"vorlane.sdk [ERROR]: message", "vorlane.sdk [WARN]: message",
                                        "vorlane.sdk [ERROR]: message"}));
}

TEST_F(VLLogOldPhoneTest, TheSinkOfTheSystemLogThrows) {
    try {
        const VLOSLogger logger;
        ADD_FAILURE() << "was made";
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), "VLOSLogger Usage Exception");
        EXPECT_EQ(exception.reason(),
                  "Attempting to use the VLOSLogger class on an iOS version that does not support os_log()");
    }
}

}  // namespace

}  // namespace vorlane

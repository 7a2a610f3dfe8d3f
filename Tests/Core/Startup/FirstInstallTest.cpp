#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "Public/VLValue.h"
#include "Public/Vorlane.h"
#include "Simulator/Platform/RecordingLogger.h"
#include "Simulator/Platform/SimulatedPhone.h"

namespace vorlane {

namespace {

const std::string kOrigin = "http://127.0.0.1:9";

/// Each test runs in a process of its own, in which no platform has been installed yet.
class FirstInstallTest : public ::testing::Test {
protected:
    FirstInstallTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

[[noreturn]] void exitWith(bool isRight, const char* what) {
    if (!isRight) std::cerr << what << std::endl;
    std::exit(isRight ? EXIT_SUCCESS : EXIT_FAILURE);
}

void require(bool condition, const char* what) {
    if (!condition) exitWith(false, what);
}

std::shared_ptr<VLURLs> setLocalURLs() {
    const auto urls = VLURLsProduction::URLsWithOrigin(*NSURL::URLWithString(kOrigin));
    Vorlane::setURLs(urls);
    return urls;
}

void launch(SimulatedPhone& phone) {
    auto options = VLSDKOptions::developmentOptions();
    options.setAppKey("0123456789abcdef0123456789abcdef");
    Vorlane::initialiseSDKWithApplication(phone.application(), std::nullopt, options);
    phone.settle();
}

bool contains(const std::shared_ptr<VLLogger>& logger) {
    const auto loggers = VLLog::sharedInstance().loggers();
    return std::find(loggers.begin(), loggers.end(), logger) != loggers.end();
}

TEST_F(FirstInstallTest, KeepsTheEndpointSet) {
    EXPECT_EXIT(
        {
            const auto urls = setLocalURLs();
            const auto phone = std::make_shared<SimulatedPhone>();
            Platform::install(phone);
            require(Vorlane::getURLs() == urls, "getURLs() returns another set");
            launch(*phone);
            exitWith(phone->session().requests(kOrigin + "/config/application/ios/").size() == 1,
                     "other URLs are used");
        },
        ::testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_F(FirstInstallTest, MayPrecedeTheEndpointSet) {
    EXPECT_EXIT(
        {
            const auto phone = std::make_shared<SimulatedPhone>();
            Platform::install(phone);
            setLocalURLs();
            launch(*phone);
            exitWith(phone->session().requests(kOrigin + "/config/application/ios/").size() == 1,
                     "other URLs are used");
        },
        ::testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_F(FirstInstallTest, KeepsTheThresholdAndTheSinks) {
    EXPECT_EXIT(
        {
            const auto sink = std::make_shared<RecordingLogger>();
            VLLog::sharedInstance().setLogLevel(VLLogLevel::Error);
            VLLog::sharedInstance().addLogger(sink);
            const auto phone = std::make_shared<SimulatedPhone>();
            Platform::install(phone);
            require(VLLog::sharedInstance().logLevel() == VLLogLevel::Error, "the threshold is another one");
            logMessage(VLLogLevel::Error, "kept");
            logMessage(VLLogLevel::Warn, "dropped");
            phone->settle();
            require(sink->lines().size() == 1 && sink->lines()[0].message == "kept", "the sink has other lines");
            exitWith(phone->systemLog().size() == 1, "the installed platform's log is not used");
        },
        ::testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_F(FirstInstallTest, ReplacesTheSystemSink) {
    EXPECT_EXIT(
        {
            const auto sink = std::make_shared<RecordingLogger>();
            VLLog::sharedInstance().addLogger(sink);
            const auto before = VLLog::sharedInstance().loggers();
            Platform::install(std::make_shared<SimulatedPhone>());
            const auto after = VLLog::sharedInstance().loggers();
            require(before.size() == 2 && before[1] == sink, "the sinks before are others");
            exitWith(after.size() == 2 && after[0] != before[0] && after[1] == sink, "the sinks after are others");
        },
        ::testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_F(FirstInstallTest, DoesNotRestoreARemovedSystemSink) {
    EXPECT_EXIT(
        {
            auto& log = VLLog::sharedInstance();
            log.removeLogger(log.loggers()[0]);
            Platform::install(std::make_shared<SimulatedPhone>());
            exitWith(log.loggers().empty(), "there is a sink");
        },
        ::testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_F(FirstInstallTest, ASecondInstallStartsAfresh) {
    EXPECT_EXIT(
        {
            const auto sink = std::make_shared<RecordingLogger>();
            Platform::install(std::make_shared<SimulatedPhone>());
            setLocalURLs();
            VLLog::sharedInstance().setLogLevel(VLLogLevel::Error);
            VLLog::sharedInstance().addLogger(sink);
            Platform::install(std::make_shared<SimulatedPhone>());
            require(Vorlane::getURLs() == nullptr, "the endpoint set was kept");
            require(VLLog::sharedInstance().logLevel() == VLLogLevel::Info, "the threshold was kept");
            exitWith(!contains(sink), "the sink was kept");
        },
        ::testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_F(FirstInstallTest, OnlyTheVeryFirstInstallKeepsAnything) {
    EXPECT_EXIT(
        {
            Platform::install(std::make_shared<SimulatedPhone>());
            const auto phone = std::make_shared<SimulatedPhone>();
            setLocalURLs();
            Platform::install(phone);
            exitWith(Vorlane::getURLs() == nullptr, "the endpoint set was kept");
        },
        ::testing::ExitedWithCode(EXIT_SUCCESS), "");
}

}  // namespace

}  // namespace vorlane

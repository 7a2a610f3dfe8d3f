#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <stdexcept>

#include "Public/VLFileLogger.h"
#include "Tests/Platform/Linux/Curl/LoopbackServer.h"
#include "Tests/Recipes/RecipeTest.h"

namespace vorlane {

namespace {

/// An environment variable with another value for the length of a test.
class ChangedVariable {
public:
    ChangedVariable(std::string name, const std::string& value) : name_(std::move(name)) {
        if (const char* previous = getenv(name_.c_str())) previous_ = previous;
        setenv(name_.c_str(), value.c_str(), 1);
    }
    ~ChangedVariable() { previous_ ? setenv(name_.c_str(), previous_->c_str(), 1) : unsetenv(name_.c_str()); }
    ChangedVariable(const ChangedVariable&) = delete;
    ChangedVariable& operator=(const ChangedVariable&) = delete;

private:
    const std::string name_;
    std::optional<std::string> previous_;
};

using HostRecipesTest = RecipeTest;

TEST_F(HostRecipesTest, ASystemServiceKeepsItsFilesInTheStateDirectory) {
    const ChangedVariable stateDirectory("STATE_DIRECTORY", folder.path("state"));
    auto options = optionsWithFolder();
    options.documentsFolder.clear();
    start(options);
    EXPECT_TRUE(platform->documentsFolder().starts_with(folder.path("state")));
    const auto deviceId = Vorlane::deviceId();
    Platform::install(nullptr);
    start(options);
    EXPECT_EQ(Vorlane::deviceId(), deviceId);
}

TEST_F(HostRecipesTest, AProxyOptionIsUsed) {
    std::promise<std::string> target;
    const LoopbackServer proxy(LoopbackServer::answering([&](const LoopbackServer::Request& request) {
        target.set_value(request.target);
        return LoopbackServer::answer(200, "ok");
    }));
    auto options = optionsWithFolder();
    options.proxy = proxy.url("");
    install(options);
    Vorlane::setURLs(VLURLsProduction::URLsWithOrigin(*NSURL::URLWithString("http://service.invalid")));
    Vorlane::registerEventWithType("Browse", "shoes");
    EXPECT_TRUE(platform->runUntilIdle(10));
    EXPECT_TRUE(target.get_future().get().starts_with("http://service.invalid/0.8/register_app_event"));
}

TEST_F(HostRecipesTest, AFileLoggerKeepsTheLog) {
    install(optionsWithFolder());
    VLLog::sharedInstance().addLogger(std::make_shared<VLFileLogger>(folder.path("vorlane.log")));
    VLLog::sharedInstance().setLogLevel(VLLogLevel::Info);
    Vorlane::openVorlaneDeepLink(std::nullopt);
    Platform::shutdown();
    std::ifstream file(folder.path("vorlane.log"));
    const std::string log{std::istreambuf_iterator<char>(file), {}};
    EXPECT_NE(log.find("Vorlane ignored a nil URL"), std::string::npos) << log;
}

TEST_F(HostRecipesTest, AnExceptionOfAHandlerReachesTheHost) {
    start();
    bool didRunLater = false;
    Vorlane::setTag("drink", "tea", VLTagType::String, [](const auto&) { throw std::runtime_error("the host's own"); });
    EXPECT_THROW(platform->runUntilIdle(10), std::runtime_error);
    Vorlane::setTag("drink", "coffee", VLTagType::String, [&](const auto& error) { didRunLater = !error; });
    EXPECT_TRUE(platform->runUntilIdle(10));
    EXPECT_TRUE(didRunLater);
}

/// What a loop in C calls.
extern "C" void pollFromC(void* platform) { static_cast<LinuxPlatform*>(platform)->poll(); }

TEST_F(HostRecipesTest, ALoopInCPolls) {
    start();
    bool isDone = false;
    Vorlane::setTag("drink", "coffee", VLTagType::String, [&](const auto&) { isDone = true; });
    while (!isDone) pollFromC(platform.get());
}

TEST_F(HostRecipesTest, FilesOfAnEarlierVersionAreRead) {
    std::filesystem::create_directories(folder.path("documents"));
    std::ofstream(folder.path("documents/VLLibSettings.plist")) << R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">
<dict>
	<key>VLDeviceId</key>
	<string>B9407F30-F5F8-466E-AFF9-25556B57FE6D</string>
	<key>VLSessionCount</key>
	<integer>7</integer>
	<key>VLTrackingID</key>
	<string>anna</string>
</dict>
</plist>
)";
    start();
    EXPECT_EQ(Vorlane::deviceId(), "B9407F30-F5F8-466E-AFF9-25556B57FE6D");
    EXPECT_EQ(Vorlane::trackingId(), "anna");
}

}  // namespace

}  // namespace vorlane

#include "Platform/Linux/LinuxPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/CLLocationManager.h"
#include "Platform/LocationBackEnd.h"
#include "Platform/NSBundle.h"
#include "Platform/NSNotificationCenter.h"
#include "Platform/OSLog.h"
#include "Platform/UIApplication.h"
#include "Platform/UIDevice.h"
#include "Public/VLURLsProduction.h"
#include "Public/Vorlane.h"
#include "Simulator/Support/ChildProcess.h"
#include "Tests/Platform/Linux/Curl/LoopbackServer.h"
#include "Tests/Platform/Linux/Curl/SessionOutcome.h"
#include "Tests/Platform/Linux/ScopedEnvironment.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane {
namespace {

using SteadyClock = std::chrono::steady_clock;

std::ptrdiff_t entriesOf(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

class LinuxPlatformTest : public testing::Test {
protected:
    ~LinuxPlatformTest() override { Platform::install(nullptr); }

    void write(const std::string& path, const std::string& text) const { std::ofstream(folder / path) << text; }

    std::shared_ptr<LinuxPlatform> install(LinuxPlatform::Options options = {}) const {
        auto platform = std::make_shared<LinuxPlatform>(std::move(options));
        Platform::install(platform);
        return platform;
    }

    /// The output of the host program's "describe".
    std::string description(const std::string& program, const std::map<std::string, std::string>& environment) const {
        return support::ChildProcess({program, "describe"}, environment).readRest();
    }

    const TemporaryFolder temporaryFolder;
    const std::filesystem::path folder = temporaryFolder.path();
};

TEST_F(LinuxPlatformTest, ConstructionStartsNoThreadAndOpensNoFile) {
    const auto threads = entriesOf("/proc/self/task");
    const auto files = entriesOf("/proc/self/fd");
    const LinuxPlatform platform;
    EXPECT_EQ(entriesOf("/proc/self/task"), threads);
    EXPECT_EQ(entriesOf("/proc/self/fd"), files);
}

TEST_F(LinuxPlatformTest, HasTheLatestGeneration) { EXPECT_EQ(LinuxPlatform().systemVersion(), 12.0); }

TEST_F(LinuxPlatformTest, ClockIsTheSystems) {
    EXPECT_NEAR(LinuxPlatform().clock().now(), static_cast<double>(std::time(nullptr)), 2.0);
}

TEST_F(LinuxPlatformTest, IsTheDefaultPlatform) {
    Platform::install(nullptr);
    EXPECT_NE(dynamic_cast<LinuxPlatform*>(&Platform::current()), nullptr);
}

TEST_F(LinuxPlatformTest, AccessorsReturnTheSameObject) {
    LinuxPlatform platform;
    EXPECT_EQ(platform.mainQueue(), platform.mainQueue());
    EXPECT_EQ(platform.application(), platform.application());
    EXPECT_EQ(platform.device(), platform.device());
    EXPECT_EQ(platform.notificationCenter(), platform.notificationCenter());
    EXPECT_EQ(platform.mainBundle(), platform.mainBundle());
    EXPECT_NE(platform.makeSerialQueue("a"), platform.makeSerialQueue("a"));
    EXPECT_NE(platform.makeURLSession({}), platform.makeURLSession({}));
    EXPECT_NE(platform.makeOSLog("a", "b"), nullptr);
}

TEST_F(LinuxPlatformTest, ApplicationPostsToTheNotificationCentre) {
    LinuxPlatform platform;
    int count = 0;
    platform.notificationCenter()->addObserver(UIApplicationDidBecomeActiveNotification,
                                               [&count](const auto&) { ++count; });
    platform.application()->didBecomeActive();
    EXPECT_EQ(count, 1);
}

TEST_F(LinuxPlatformTest, ApplicationUsesTheHostsCallbacks) {
    LinuxPlatform::Options options;
    int registrations = 0;
    TimeInterval interval = 0;
    options.registerForRemoteNotifications = [&registrations] { ++registrations; };
    options.setMinimumBackgroundFetchInterval = [&interval](TimeInterval seconds) { interval = seconds; };
    LinuxPlatform platform(options);
    platform.application()->registerForRemoteNotifications();
    platform.application()->setMinimumBackgroundFetchInterval(900);
    EXPECT_EQ(registrations, 1);
    EXPECT_EQ(interval, 900);
}

TEST_F(LinuxPlatformTest, BundleHasTheHostsValues) {
    write("sound.txt", "x");
    LinuxPlatform::Options options;
    options.infoDictionary = {{"CFBundleIdentifier", "com.example.app"}};
    options.resourceFolder = folder.string();
    LinuxPlatform platform(options);
    EXPECT_EQ(platform.mainBundle()->bundleIdentifier(), "com.example.app");
    EXPECT_EQ(platform.mainBundle()->pathForResource("sound", "txt"), (folder / "sound.txt").string());
}

TEST_F(LinuxPlatformTest, DocumentsFolderIsTheHostsChoice) {
    LinuxPlatform::Options options;
    options.documentsFolder = (folder / "documents").string();
    const LinuxPlatform platform(options);
    EXPECT_EQ(platform.documentsFolder(), (folder / "documents").string());
    EXPECT_EQ(platform.documentsCreationDate(), std::nullopt);
    std::filesystem::create_directory(folder / "documents");
    ASSERT_NE(platform.documentsCreationDate(), std::nullopt);
    EXPECT_NEAR(*platform.documentsCreationDate(), static_cast<double>(std::time(nullptr)), 10.0);
}

TEST_F(LinuxPlatformTest, DefaultDocumentsFolderFollowsXDG) {
    EXPECT_EQ(description(VORLANE_HOST_PROGRAM, {{"XDG_DATA_HOME", "/data"}}),
              "none\n/data/vorlane_host_program\nmissing\n");
    EXPECT_EQ(description(VORLANE_HOST_PROGRAM, {{"XDG_DATA_HOME", ""}, {"HOME", folder.string()}}),
              "none\n" + folder.string() + "/.local/share/vorlane_host_program\nmissing\n");
}

TEST_F(LinuxPlatformTest, ReadsInfoPlistBesideTheExecutable) {
    std::filesystem::copy_file(VORLANE_HOST_PROGRAM, folder / "host");
    write("sound.txt", "x");
    write("Info.plist", R"(<?xml version="1.0"?><plist version="1.0"><dict>
                            <key>CFBundleIdentifier</key><string>com.example.app</string></dict></plist>)");
    EXPECT_EQ(description(folder / "host", {{"XDG_DATA_HOME", "/data"}}),
              "com.example.app\n/data/com.example.app\nfound\n");
}

TEST_F(LinuxPlatformTest, IdentifierWithSlashesNamesNoFolder) {
    std::filesystem::copy_file(VORLANE_HOST_PROGRAM, folder / "host");
    write("Info.plist", R"(<?xml version="1.0"?><plist version="1.0"><dict>
                            <key>CFBundleIdentifier</key><string>../../etc</string></dict></plist>)");
    EXPECT_EQ(description(folder / "host", {{"XDG_DATA_HOME", "/data"}}), "../../etc\n/data/host\nmissing\n");
}

TEST_F(LinuxPlatformTest, ConsoleIsStandardError) {
    LinuxPlatform platform;
    testing::internal::CaptureStderr();
    platform.NSLog("a line %s");
    platform.NSLog("");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "a line %s\n\n");
}

TEST_F(LinuxPlatformTest, SessionsFetch) {
    const LoopbackServer server(
        LoopbackServer::answering([](const auto&) { return LoopbackServer::answer(200, "x"); }));
    LinuxPlatform platform;
    EXPECT_EQ(fetch(*platform.makeURLSession({}), requestOf(server.url())).text(), "x");
}

TEST_F(LinuxPlatformTest, HostRunsOrPollsTheMainQueue) {
    LinuxPlatform platform;
    int count = 0;
    platform.mainQueue()->post([&count] { ++count; });
    EXPECT_EQ(platform.poll(), 1U);
    platform.mainQueue()->post([&] {
        ++count;
        platform.stopRunning();
    });
    platform.run();
    platform.mainQueue()->post([&count] { ++count; });
    platform.runFor(0.01);
    EXPECT_EQ(count, 3);
}

TEST_F(LinuxPlatformTest, HostOpensURLs) {
    std::vector<std::string> opened;
    LinuxPlatform::Options options;
    options.documentsFolder = folder;
    options.openURL = [&opened](const NSURL& url) { opened.push_back(url.absoluteString()); };
    const auto platform = install(std::move(options));
    EXPECT_TRUE(platform->application()->openURL(*NSURL::URLWithString("app-settings:")));
    EXPECT_THAT(opened, testing::ElementsAre("app-settings:"));
    EXPECT_EQ(platform->application()->keyWindow(), nullptr);
}

TEST_F(LinuxPlatformTest, ShutdownCancelsRequestsAndRunsHandlers) {
    const LoopbackServer silent([](LoopbackServer::Connection& connection) { connection.staySilent(); });
    const auto platform = install();
    const auto session = platform->makeURLSession({});
    std::vector<PendingRequest> requests;
    for (int i = 0; i < 100; ++i) requests.emplace_back(*session, requestOf(silent.url())).resume();
    silent.waitForConnections(6);
    Platform::shutdown();
    for (auto& request : requests) {
        ASSERT_TRUE(request.hasEnded());
        EXPECT_EQ(request.outcome().errorCode(), static_cast<std::int64_t>(NSURLError::Cancelled));
    }
}

TEST_F(LinuxPlatformTest, ShutdownRunsQueuedTasksAndTheirTasks) {
    const auto platform = install();
    const auto queue = platform->makeSerialQueue("test");
    std::atomic<int> steps = 0;
    std::function<void()> step = [&] {
        if (++steps < 20) (steps % 2 == 0 ? queue : platform->mainQueue())->post(step);
    };
    queue->post(step);
    Platform::shutdown();
    EXPECT_EQ(steps, 20);
}

TEST_F(LinuxPlatformTest, NothingRunsAfterAShutdown) {
    const auto platform = install();
    const auto queue = platform->makeSerialQueue("test");
    const auto session = platform->makeURLSession({});
    std::atomic<bool> hasRun = false;
    const auto run = [&hasRun] { hasRun = true; };
    queue->postAfter(0.01, run);
    platform->mainQueue()->postAfter(0, [] {});
    platform->mainQueue()->postAfter(60, run);
    Platform::shutdown();
    queue->post(run);
    platform->mainQueue()->post(run);
    platform->makeSerialQueue("late")->post(run);
    session->dataTaskWithRequest(requestOf("http://127.0.0.1:1/"), [run](auto, auto, auto) { run(); })->resume();
    platform->makeURLSession({})
        ->dataTaskWithRequest(requestOf("http://127.0.0.1:1/"), [run](auto, auto, auto) { run(); })
        ->resume();
    EXPECT_EQ(platform->poll(), 0U);
    platform->run();
    EXPECT_FALSE(hasRun);
}

TEST_F(LinuxPlatformTest, ShutdownLeavesNoThread) {
    const LoopbackServer server(
        LoopbackServer::answering([](const auto&) { return LoopbackServer::answer(200, "x"); }));
    const auto platform = install();
    // Threads of a sanitizer and of the server exist before and after.
    const auto session = platform->makeURLSession({});
    EXPECT_EQ(fetch(*session, requestOf(server.url())).text(), "x");
    const auto queue = platform->makeSerialQueue("test");
    std::promise<void> started;
    queue->post([&started] { started.set_value(); });
    started.get_future().get();
    const auto threads = entriesOf("/proc/self/task");
    Platform::shutdown();
    // The kernel may list a joined thread for a moment. A leaked thread would stay listed.
    while (entriesOf("/proc/self/task") > threads - 3) std::this_thread::yield();
}

TEST_F(LinuxPlatformTest, IdleShutdownIsQuick) {
    const auto platform = install();
    const auto session = platform->makeURLSession({});
    const auto start = SteadyClock::now();
    Platform::shutdown();
    EXPECT_LT(SteadyClock::now() - start, std::chrono::milliseconds(500));
}

TEST_F(LinuxPlatformTest, ShutdownGivesUpOnAnEndlessTask) {
    const auto platform = install();
    const auto queue = platform->makeSerialQueue("test");
    // Like the task, they may outlive the test.
    const auto release = std::make_shared<std::promise<void>>();
    const auto ended = std::make_shared<std::promise<void>>();
    queue->post([released = std::make_shared<std::future<void>>(release->get_future()), ended] {
        released->wait();
        ended->set_value();
    });
    const auto start = SteadyClock::now();
    Platform::shutdown();
    EXPECT_LT(SteadyClock::now() - start, std::chrono::seconds(2));
    release->set_value();
    ended->get_future().get();
}

TEST_F(LinuxPlatformTest, RunsUntilIdleWithoutBackgroundTasks) {
    LinuxPlatform platform({.documentsFolder = folder});
    int runs = 0;
    platform.mainQueue()->post([&] { platform.mainQueue()->post([&runs] { ++runs; }); });
    platform.mainQueue()->postAfter(60, [&runs] { runs += 100; });
    EXPECT_TRUE(platform.runUntilIdle(60));
    EXPECT_EQ(runs, 1);
}

TEST_F(LinuxPlatformTest, RunsUntilTheLastBackgroundTaskEnds) {
    LinuxPlatform platform({.documentsFolder = folder});
    const auto application = platform.application();
    const auto first = application->beginBackgroundTaskWithName("first", nullptr);
    const auto second = application->beginBackgroundTaskWithName("second", nullptr);
    platform.mainQueue()->post([&] { application->endBackgroundTask(first); });
    std::promise<void> begun;
    std::thread other([&] {
        begun.get_future().wait();
        application->endBackgroundTask(second);
    });
    platform.mainQueue()->postAfter(0.01, [&begun] { begun.set_value(); });
    EXPECT_TRUE(platform.runUntilIdle(60));
    other.join();
}

TEST_F(LinuxPlatformTest, RunUntilIdleReportsOpenTasksAtItsEnd) {
    LinuxPlatform platform({.documentsFolder = folder});
    const auto task = platform.application()->beginBackgroundTaskWithName("task", nullptr);
    EXPECT_FALSE(platform.runUntilIdle(0.01));
    platform.stopRunning();
    EXPECT_FALSE(platform.runUntilIdle(60));
    platform.application()->endBackgroundTask(task);
    EXPECT_TRUE(platform.runUntilIdle(0));
}

TEST_F(LinuxPlatformTest, ProxyOptionReplacesTheEnvironments) {
    const LoopbackServer proxy(
        LoopbackServer::answering([](const auto& request) { return LoopbackServer::answer(200, request.target); }));
    const LoopbackServer server(
        LoopbackServer::answering([](const auto&) { return LoopbackServer::answer(200, "direct"); }));
    const auto fetchWith = [&server](std::optional<std::string> proxyOption) {
        LinuxPlatform platform({.proxy = std::move(proxyOption)});
        return fetch(*platform.makeURLSession({}), requestOf(server.url())).text();
    };
    EXPECT_EQ(fetchWith(std::nullopt), "direct");
    EXPECT_EQ(fetchWith(proxy.url()), server.url());
    const ScopedEnvironment environment("http_proxy", proxy.url());
    EXPECT_EQ(fetchWith(std::nullopt), server.url());
    EXPECT_EQ(fetchWith(""), "direct");
    const ScopedEnvironment exception("no_proxy", "127.0.0.1");
    EXPECT_EQ(fetchWith(std::nullopt), "direct");
}

/// Calls the library from its setter.
class CallingBackEnd : public LocationBackEnd {
public:
    void setListener(std::weak_ptr<Listener> /*listener*/) override {
        ++calls;
        locationManager = Platform::current().locationManager();
        appKey = Vorlane::appKey();
        std::thread([] { Vorlane::trackingId(); }).join();
    }
    void setNeeds(const Needs& /*needs*/) override {}
    bool locationServicesEnabled() const override { return true; }
    bool hasPositions() const override { return true; }
    bool hasAdvertisements() const override { return true; }
    CLAuthorizationStatus authorizationStatus() const override { return CLAuthorizationStatus::NotDetermined; }
    void requestAuthorization(CLAuthorizationStatus /*wanted*/) override {}

    int calls = 0;
    std::shared_ptr<CLLocationManager> locationManager;
    std::optional<std::string> appKey;
};

TEST_F(LinuxPlatformTest, BackEndMayCallTheLibraryFromItsSetter) {
    const auto backEnd = std::make_shared<CallingBackEnd>();
    const auto platform = install({.documentsFolder = folder, .locationBackEnd = backEnd});
    EXPECT_FALSE(Vorlane::trackingId().empty());
    EXPECT_EQ(backEnd->calls, 1);
    EXPECT_EQ(backEnd->locationManager, platform->locationManager());
    Platform::shutdown();
}

TEST_F(LinuxPlatformTest, BackEndIsSetUpByThePlatformAlone) {
    const auto backEnd = std::make_shared<CallingBackEnd>();
    const auto platform = install({.documentsFolder = folder, .locationBackEnd = backEnd});
    EXPECT_NE(platform->locationManager(), nullptr);
    EXPECT_EQ(backEnd->calls, 1);
    Platform::shutdown();
}

/// The main loop of a host.
class HostLoop : public DispatchQueue {
public:
    void post(std::function<void()> task) override { postAfter(0, std::move(task)); }
    void postAfter(TimeInterval, std::function<void()> task) override {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    bool isCurrent() const override { return isRunning_; }

    void runAll() {
        isRunning_ = true;
        for (const auto& task : takeTasks()) task();
        isRunning_ = false;
    }

private:
    std::vector<std::function<void()>> takeTasks() {
        const std::lock_guard lock(mutex_);
        return std::exchange(tasks_, {});
    }

    std::atomic<bool> isRunning_ = false;
    std::mutex mutex_;
    // Guarded by mutex_.
    std::vector<std::function<void()>> tasks_;
};

/// A platform whose main queue is the host's.
class HostLoopTest : public LinuxPlatformTest {
protected:
    HostLoopTest() {
        LinuxPlatform::Options options;
        options.documentsFolder = folder;
        options.mainQueue = loop;
        platform = install(options);
    }

    const std::shared_ptr<HostLoop> loop = std::make_shared<HostLoop>();
    std::shared_ptr<LinuxPlatform> platform;
    std::vector<int> ran;
};

TEST_F(HostLoopTest, HostMayBringItsMainQueue) {
    platform->mainQueue()->post([&] {
        EXPECT_TRUE(platform->mainQueue()->isCurrent());
        ran.push_back(1);
    });
    platform->mainQueue()->postAfter(5, [this] { ran.push_back(2); });
    EXPECT_FALSE(platform->mainQueue()->isCurrent());
    platform->run();
    platform->runFor(60);
    EXPECT_EQ(platform->poll(), 0U);
    EXPECT_THAT(ran, testing::ElementsAre());
    loop->runAll();
    EXPECT_THAT(ran, testing::ElementsAre(1, 2));
}

TEST_F(HostLoopTest, TasksKeepTheirOrder) {
    platform->mainQueue()->post([&] {
        ran.push_back(1);
        platform->mainQueue()->post([this] { ran.push_back(4); });
    });
    loop->post([this] { ran.push_back(2); });
    platform->mainQueue()->post([this] { ran.push_back(3); });
    loop->runAll();
    EXPECT_THAT(ran, testing::ElementsAre(1, 2, 3));
    loop->runAll();
    EXPECT_THAT(ran, testing::ElementsAre(1, 2, 3, 4));
}

TEST_F(HostLoopTest, ShutdownRunsWaitingTasksAndNoneLater) {
    platform->mainQueue()->post([&] {
        EXPECT_TRUE(platform->mainQueue()->isCurrent());
        ran.push_back(1);
        platform->mainQueue()->post([this] { ran.push_back(2); });
    });
    platform->mainQueue()->postAfter(0, [this] { ran.push_back(3); });
    Platform::shutdown();
    EXPECT_FALSE(platform->mainQueue()->isCurrent());
    EXPECT_THAT(ran, testing::ElementsAre(1, 2));
    platform->mainQueue()->post([this] { ran.push_back(4); });
    loop->runAll();
    EXPECT_THAT(ran, testing::ElementsAre(1, 2));
}

TEST_F(HostLoopTest, ShutdownRunsHandlersTheHostDoesNotReach) {
    const LoopbackServer silent([](LoopbackServer::Connection& connection) { connection.staySilent(); });
    Vorlane::setURLs(VLURLsProduction::URLsWithOrigin(*NSURL::URLWithString(silent.url())));
    int calls = 0;
    Vorlane::setTag("name", "value", VLTagType::String, [&](const auto& error) {
        ++calls;
        EXPECT_TRUE(error);
        EXPECT_TRUE(platform->mainQueue()->isCurrent());
    });
    silent.waitForConnections(1);
    Platform::shutdown();
    EXPECT_EQ(calls, 1);
    loop->runAll();
    EXPECT_EQ(calls, 1);
}

/// Counts lines and logs one after the first.
class TalkativeLogger : public VLLogger {
public:
    void logMessage(const std::string&, const std::optional<Value>&, VLLogLevel level) override {
        if (++lines == 1) vorlane::logMessage(level, "a sink's own line");
    }
    std::atomic<int> lines = 0;
};

TEST_F(LinuxPlatformTest, MayBeReplacedWhileBusy) {
    const LoopbackServer silent([](LoopbackServer::Connection& connection) { connection.staySilent(); });
    LinuxPlatform::Options options;
    options.documentsFolder = folder;
    install(options);
    Vorlane::setURLs(VLURLsProduction::URLsWithOrigin(*NSURL::URLWithString(silent.url())));
    const auto first = std::make_shared<TalkativeLogger>();
    VLLog::sharedInstance().setLogLevel(VLLogLevel::Error);
    VLLog::sharedInstance().addLogger(first);
    int calls = 0;
    for (int i = 0; i < 20; ++i) {
        Vorlane::setTag("name", "value", VLTagType::String, [&calls](const auto&) { ++calls; });
        Vorlane::getInboxMessagesWithCompletionHandler([](const auto&, auto) {});
    }
    for (int i = 0; i < 1000; ++i) logMessage(VLLogLevel::Error, "a line");

    install(options);
    EXPECT_EQ(calls, 20);
    EXPECT_GT(first->lines, 1000);
    const auto second = std::make_shared<TalkativeLogger>();
    VLLog::sharedInstance().addLogger(second);
    logMessage(VLLogLevel::Error, "a line");
    Platform::shutdown();
    EXPECT_EQ(second->lines, 2);
}

}  // namespace
}  // namespace vorlane

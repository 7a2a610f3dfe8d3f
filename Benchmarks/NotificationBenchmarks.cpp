// The time that local notifications take on the main thread: scheduling many, setting the phashes of all in one pass,
// and the growth of both. The network answers immediately and the list is in memory. The file of the Linux platform is
// measured separately.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <utility>

#include "Benchmarks/Support/Host.h"
#include "Benchmarks/Support/Process.h"
#include "Core/Base/VLSettings.h"
#include "Platform/Linux/Application/LinuxApplication.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Public/Vorlane.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane::benchmarks {

namespace {

constexpr const char* kSplitAnswer =
    R"({"phash":"0123456789abcdef0123456789abcdef","messagetext":"Half%20price%20today","campaignid":7,"splitid":"A"})";

/// Answers every request immediately, on the caller's thread, with a split.
class SplitSession : public NSURLSession {
public:
    std::shared_ptr<NSURLSessionDataTask> dataTaskWithRequest(NSURLRequest request,
                                                              CompletionHandler handler) override {
        return std::make_shared<Task>(std::move(request.URL), std::move(handler));
    }

private:
    class Task : public NSURLSessionDataTask {
    public:
        Task(NSURL url, CompletionHandler handler) : url_(std::move(url)), handler_(std::move(handler)) {}
        void resume() override {
            const std::string body = kSplitAnswer;
            const auto handler = std::exchange(handler_, nullptr);
            if (handler)
                handler(Data(body.begin(), body.end()), std::make_shared<NSHTTPURLResponse>(url_, 200), std::nullopt);
        }
        void cancel() override {}

    private:
        NSURL url_;
        CompletionHandler handler_;
    };
};

/// A Linux platform that keeps scheduled notifications in memory only.
class MemoryPlatform : public LinuxPlatform {
public:
    explicit MemoryPlatform(Options options)
        : LinuxPlatform(std::move(options)),
          application_(
              std::make_shared<LinuxApplication>(notificationCenter(), mainQueue(), LinuxApplication::Callbacks{})) {}

    std::shared_ptr<UIApplication> application() override { return application_; }
    std::shared_ptr<NSURLSession> makeURLSession(const NSURLSessionConfiguration& /*configuration*/) override {
        return std::make_shared<SplitSession>();
    }

private:
    const std::shared_ptr<LinuxApplication> application_;
};

/// A started library whose notifications the user has allowed.
class NotifyingHost {
public:
    NotifyingHost() {
        LinuxPlatform::Options options;
        options.documentsFolder = folder_.path();
        platform_ = std::make_shared<MemoryPlatform>(options);
        Platform::install(platform_);
        Vorlane::setURLs(VLURLsProduction::URLsWithOrigin(*NSURL::URLWithString("http://127.0.0.1:9")));
        allowNotifications();
        startLibrary();
        runMainQueue();
    }
    ~NotifyingHost() {
        Platform::shutdown();
        Platform::install(nullptr);
    }
    NotifyingHost(const NotifyingHost&) = delete;
    NotifyingHost& operator=(const NotifyingHost&) = delete;

    void schedule(int count) const {
        const double soonest = platform_->clock().now() + 3600;
        for (int i = 0; i < count; ++i) {
            Vorlane::scheduleLocalNotification("Come and see", 1, "campaign", soonest + i % 1000,
                                               Dictionary{{"item", "running shoes"}}, std::nullopt);
        }
    }

    /// Runs one phash pass over all outstanding notifications, and handles the answers.
    void setAllPhashes() const {
        platform_->application()->willResignActive();
        runMainQueue();
    }

    void runMainQueue() const {
        while (platform_->poll() > 0) continue;
    }

private:
    static void allowNotifications() {
        VLSettings(Platform::current().device())
            .setNotificationSettings(VLUserNotificationSettings::settingsWithAuthorisation(2, 2, 2, 2, 2, 2, 2, 2, 1));
    }

    TemporaryFolder folder_;
    std::shared_ptr<MemoryPlatform> platform_;
};

void ScheduleNotifications(benchmark::State& state, int count) {
    for (auto _ : state) {
        const NotifyingHost host;
        const double start = threadTime();
        host.schedule(count);
        state.SetIterationTime(threadTime() - start);
    }
}
BENCHMARK_CAPTURE(ScheduleNotifications, 100, 100)->Iterations(5)->UseManualTime();
BENCHMARK_CAPTURE(ScheduleNotifications, 1000, 1000)->Iterations(5)->UseManualTime();
BENCHMARK_CAPTURE(ScheduleNotifications, 10000, 10000)->Iterations(1)->UseManualTime();

void PhashPass(benchmark::State& state, int count) {
    for (auto _ : state) {
        const NotifyingHost host;
        host.schedule(count);
        const double start = threadTime();
        host.setAllPhashes();
        state.SetIterationTime(threadTime() - start);
    }
}
BENCHMARK_CAPTURE(PhashPass, 100, 100)->Iterations(5)->UseManualTime();
BENCHMARK_CAPTURE(PhashPass, 1000, 1000)->Iterations(5)->UseManualTime();
BENCHMARK_CAPTURE(PhashPass, 10000, 10000)->Iterations(1)->UseManualTime();

/// Schedules one notification beside 1,000 of an earlier process, with the file that keeps them.
void ScheduleIntoFile(benchmark::State& state) {
    const TemporaryFolder folder;
    UILocalNotification notification;
    notification.alertBody = "Come and see";
    notification.fireDate = 4e9;
    notification.userInfo = Dictionary{{"vl_notification", true}, {"item", "running shoes"}};
    const Array thousand(1000, Value(notification.toDictionary()));
    NSPropertyListSerialization::writeToFile({{"notifications", thousand}},
                                             folder.path() + "/VLScheduledNotifications.plist");
    const auto application = installOfflinePlatform(folder.path())->application();
    for (auto _ : state) {
        const double start = threadTime();
        application->scheduleLocalNotification(notification);
        state.SetIterationTime(threadTime() - start);
    }
    Platform::shutdown();
    Platform::install(nullptr);
}
BENCHMARK(ScheduleIntoFile)->Iterations(20)->UseManualTime();

}  // namespace

}  // namespace vorlane::benchmarks

#include "Simulator/Platform/SimulatedPhone.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "Platform/Internal/SerialDispatchQueue.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/NSBundle.h"
#include "Platform/NSFileManager.h"
#include "Platform/NSNotificationCenter.h"
#include "Platform/NSTimer.h"
#include "Platform/NSURLSession.h"
#include "Platform/OSLog.h"
#include "Platform/UIViewController.h"
#include "Platform/UIWindow.h"
#include "Simulator/Platform/CountingURLSession.h"
#include "Simulator/Platform/Internal/SimulatedSerialQueue.h"
#include "Simulator/Platform/SimulatedMainQueue.h"
#include "Simulator/Platform/VirtualClock.h"

namespace vorlane {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::seconds kShutdownTime{2};
constexpr const char* kMonitoredRegionsFile = "/VLMonitoredRegions.plist";
constexpr const char* kScheduledNotificationsFile = "/VLScheduledNotifications.plist";
// How long a queue is waited for before it is seen whether the main queue, which it may be waiting for, has work.
constexpr std::chrono::milliseconds kTurn{1};

/// The system's time when the phone was made, and steadily on from there: setting the system's clock moves no timer.
class RealClock : public Clock {
public:
    double now() const override {
        return start_ + std::chrono::duration<double>(SteadyClock::now() - steadyStart_).count();
    }

private:
    const double start_ = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    const SteadyClock::time_point steadyStart_ = SteadyClock::now();
};

/// What was written to the system's log and to the console.
struct WrittenLines {
    std::mutex mutex;
    // Guarded by mutex.
    std::vector<SimulatedPhone::SystemLogLine> systemLog;
    std::vector<std::string> console;
};

class SimulatedOSLog : public OSLog {
public:
    SimulatedOSLog(std::string subsystem, std::string category, std::shared_ptr<WrittenLines> lines)
        : subsystem_(std::move(subsystem)), category_(std::move(category)), lines_(std::move(lines)) {}

    void log(OSLogType type, const std::string& text) override {
        const std::lock_guard lock(lines_->mutex);
        lines_->systemLog.push_back({subsystem_, category_, static_cast<std::uint8_t>(type), text});
    }

private:
    const std::string subsystem_;
    const std::string category_;
    const std::shared_ptr<WrittenLines> lines_;
};

std::string makeTemporaryFolder() {
    auto path = (std::filesystem::temp_directory_path() / "vorlane-phone-XXXXXX").string();
    if (!mkdtemp(path.data())) throw std::runtime_error("cannot make a folder like " + path);
    return path;
}

/// More than the steady clock can count is held to some thirty years.
SteadyClock::time_point deadlineAfter(TimeInterval seconds) {
    const std::chrono::duration<double> length(std::clamp(seconds, 0.0, 1e9));
    return SteadyClock::now() + std::chrono::duration_cast<SteadyClock::duration>(length);
}

std::string versionText(double version) {
    auto text = std::to_string(version);
    while (text.ends_with('0') && !text.ends_with(".0")) text.pop_back();
    return text;
}

LinuxPlatform::Options networkOptions(const std::string& documentsFolder) {
    LinuxPlatform::Options options;
    options.documentsFolder = documentsFolder;
    return options;
}

}  // namespace

struct SimulatedPhone::Impl {
    explicit Impl(Options given)
        : options(std::move(given)),
          isTemporary(options.documentsFolder.empty()),
          documentsFolder(isTemporary ? makeTemporaryFolder() : options.documentsFolder),
          virtualClock(options.virtualClock ? std::make_unique<VirtualClock>(*options.virtualClock) : nullptr),
          mainQueue(std::make_shared<SimulatedMainQueue>(clock(), activity)),
          user(std::make_shared<SimulatedUser>(
              [this](const std::string& event, const Dictionary& fields) { application->tell(event, fields); })),
          application(std::make_shared<SimulatedApplication>(notificationCenter, mainQueue, user)),
          userNotificationCenter(std::make_shared<SimulatedUserNotificationCenter>(
              user, mainQueue, makeQueue("UNUserNotificationCenter"),
              [told = application](const std::string& event, const Dictionary& fields) { told->tell(event, fields); })),
          locationManager(std::make_shared<SimulatedLocationManager>(
              user, mainQueue, documentsFolder + kMonitoredRegionsFile,
              [told = application](const std::string& event, const Dictionary& fields) { told->tell(event, fields); })),
          device(std::make_shared<SimulatedDevice>(versionText(options.systemVersion))),
          bundle(std::make_shared<NSBundle>(options.infoDictionary, options.resourceFolder)),
          session(std::make_shared<ScriptedURLSession>(makeQueue("NSURLSession"))) {
        NSFileManager::createDirectoryAtPath(documentsFolder);
        application->setKeyWindow(std::make_shared<UIWindow>(std::make_shared<UIViewController>()));
        // A folder of the caller's may have been another phone's before, and be one's after.
        if (!isTemporary) application->keepScheduledLocalNotifications(documentsFolder + kScheduledNotificationsFile);
        if (options.realHTTP) network = std::make_unique<LinuxPlatform>(networkOptions(documentsFolder));
    }

    const Clock& clock() const {
        if (virtualClock) return *virtualClock;
        return realClock;
    }

    std::shared_ptr<SerialDispatchQueue> makeQueue(const std::string& label) {
        auto queue = std::make_shared<SimulatedSerialQueue>(
            label, mainQueue, activity,
            virtualClock ? SimulatedSerialQueue::Delays::phoneTime : SimulatedSerialQueue::Delays::realTime);
        const std::lock_guard lock(mutex);
        if (areQueuesStopped) {
            queue->stop(SteadyClock::now());
        } else {
            std::erase_if(queues, [](const auto& known) { return known.expired(); });
            queues.push_back(queue);
        }
        return queue;
    }

    std::vector<std::shared_ptr<SerialDispatchQueue>> liveQueues() {
        const std::lock_guard lock(mutex);
        std::vector<std::shared_ptr<SerialDispatchQueue>> live;
        for (const auto& queue : queues) {
            if (auto found = queue.lock()) live.push_back(std::move(found));
        }
        return live;
    }

    enum class Requests { awaited, ignored };
    bool settleOnce(SteadyClock::time_point deadline, Requests requests);
    bool settle(SteadyClock::time_point deadline, Requests requests);
    void stopQueues(SteadyClock::time_point deadline);

    const Options options;
    const bool isTemporary;
    const std::string documentsFolder;
    const RealClock realClock;
    const std::unique_ptr<VirtualClock> virtualClock;
    const std::shared_ptr<ActivityCounter> activity = std::make_shared<ActivityCounter>(0);
    const std::shared_ptr<WrittenLines> lines = std::make_shared<WrittenLines>();
    const std::shared_ptr<RequestCount> requestCount = std::make_shared<RequestCount>();
    const std::shared_ptr<NSNotificationCenter> notificationCenter = std::make_shared<NSNotificationCenter>();

    std::mutex mutex;
    // Guarded by mutex.
    std::vector<std::weak_ptr<SerialDispatchQueue>> queues;
    bool areQueuesStopped = false;
    std::optional<std::optional<double>> creationDate;

    const std::shared_ptr<SimulatedMainQueue> mainQueue;
    const std::shared_ptr<SimulatedUser> user;
    const std::shared_ptr<SimulatedApplication> application;
    const std::shared_ptr<SimulatedUserNotificationCenter> userNotificationCenter;
    const std::shared_ptr<SimulatedLocationManager> locationManager;
    const std::shared_ptr<SimulatedDevice> device;
    const std::shared_ptr<NSBundle> bundle;
    const std::shared_ptr<ScriptedURLSession> session;
    // Real HTTP only: the platform whose network this phone borrows. Gone once the phone is stopped.
    std::unique_ptr<LinuxPlatform> network;
    bool isStopped = false;
};

/// True when a whole pass over every queue found nothing to do.
bool SimulatedPhone::Impl::settleOnce(SteadyClock::time_point deadline, Requests requests) {
    const auto isAtRest = [&] {
        return !mainQueue->hasWorkElsewhere() && (requests == Requests::ignored || requestCount->isZero());
    };
    const auto before = activity->load();
    mainQueue->runDueTasks(deadline);
    // A task posted to the main queue meanwhile ends the waiting too: the work elsewhere may itself wait for it.
    mainQueue->wait({.deadline = deadline, .clockMoves = !virtualClock, .isEnough = isAtRest});
    if (mainQueue->hasDueTask() || !isAtRest()) return false;
    // What is left is a delayed task that has just fallen due.
    for (const auto& queue : liveQueues()) {
        while (!queue->waitUntilIdle(std::min(deadline, SteadyClock::now() + kTurn))) {
            if (SteadyClock::now() >= deadline || mainQueue->hasDueTask()) return false;
        }
    }
    return isAtRest() && !mainQueue->hasDueTask() && activity->load() == before;
}

bool SimulatedPhone::Impl::settle(SteadyClock::time_point deadline, Requests requests) {
    while (!settleOnce(deadline, requests)) {
        if (SteadyClock::now() >= deadline) return false;
    }
    return true;
}

void SimulatedPhone::Impl::stopQueues(SteadyClock::time_point deadline) {
    {
        const std::lock_guard lock(mutex);
        areQueuesStopped = true;
    }
    for (const auto& queue : liveQueues()) queue->stop(deadline);
    mainQueue->stop();
}

SimulatedPhone::SimulatedPhone() : SimulatedPhone(Options()) {}

SimulatedPhone::SimulatedPhone(Options options) : impl_(std::make_unique<Impl>(std::move(options))) {}

SimulatedPhone::~SimulatedPhone() {
    SimulatedPhone::stop();
    if (!impl_->isTemporary) return;
    std::error_code ignored;
    std::filesystem::remove_all(impl_->documentsFolder, ignored);
}

double SimulatedPhone::systemVersion() const { return impl_->options.systemVersion; }

const Clock& SimulatedPhone::clock() const { return impl_->clock(); }

std::shared_ptr<DispatchQueue> SimulatedPhone::mainQueue() { return impl_->mainQueue; }

std::shared_ptr<DispatchQueue> SimulatedPhone::makeSerialQueue(const std::string& label) {
    return impl_->makeQueue(label);
}

std::shared_ptr<NSTimer> SimulatedPhone::scheduledTimer(TimeInterval seconds, std::function<void()> block) {
    auto timer = std::make_shared<NSTimer>(std::move(block));
    const auto queue = impl_->mainQueue;
    const auto token =
        queue->postAt(now() + seconds, SimulatedMainQueue::Kind::application, [timer] { timer->fire(); });
    timer->setInvalidationHandler([queue, token] { queue->cancel(token); });
    return timer;
}

std::string SimulatedPhone::documentsFolder() const { return impl_->documentsFolder; }

std::optional<double> SimulatedPhone::documentsCreationDate() const {
    {
        const std::lock_guard lock(impl_->mutex);
        if (impl_->creationDate) return *impl_->creationDate;
    }
    return NSFileManager::creationDateOfItemAtPath(impl_->documentsFolder);
}

void SimulatedPhone::setDocumentsCreationDate(std::optional<double> date) {
    const std::lock_guard lock(impl_->mutex);
    impl_->creationDate = date;
}

std::shared_ptr<NSURLSession> SimulatedPhone::makeURLSession(const NSURLSessionConfiguration& configuration) {
    if (!impl_->network) return impl_->session;
    return std::make_shared<CountingURLSession>(impl_->network->makeURLSession(configuration), impl_->requestCount,
                                                [queue = impl_->mainQueue] { queue->post([] {}); });
}

std::shared_ptr<UIApplication> SimulatedPhone::application() { return impl_->application; }

std::shared_ptr<UIDevice> SimulatedPhone::device() { return impl_->device; }

std::shared_ptr<NSNotificationCenter> SimulatedPhone::notificationCenter() { return impl_->notificationCenter; }

std::shared_ptr<NSBundle> SimulatedPhone::mainBundle() { return impl_->bundle; }

std::shared_ptr<OSLog> SimulatedPhone::makeOSLog(const std::string& subsystem, const std::string& category) {
    return std::make_shared<SimulatedOSLog>(subsystem, category, impl_->lines);
}

std::shared_ptr<UNUserNotificationCenter> SimulatedPhone::userNotificationCenter() {
    return impl_->userNotificationCenter;
}

std::shared_ptr<CLLocationManager> SimulatedPhone::locationManager() { return impl_->locationManager; }

void SimulatedPhone::NSLog(const std::string& line) {
    const std::lock_guard lock(impl_->lines->mutex);
    impl_->lines->console.push_back(line);
}

ScriptedURLSession& SimulatedPhone::session() { return *impl_->session; }

SimulatedApplication& SimulatedPhone::simulatedApplication() { return *impl_->application; }

SimulatedDevice& SimulatedPhone::simulatedDevice() { return *impl_->device; }

SimulatedUser& SimulatedPhone::simulatedUser() { return *impl_->user; }

SimulatedUserNotificationCenter& SimulatedPhone::simulatedUserNotificationCenter() {
    return *impl_->userNotificationCenter;
}

SimulatedLocationManager& SimulatedPhone::simulatedLocationManager() { return *impl_->locationManager; }

void SimulatedPhone::runMainQueue() { impl_->mainQueue->runDueTasks(); }

void SimulatedPhone::waitForMainQueue() { impl_->mainQueue->wait({.clockMoves = !impl_->virtualClock}); }

bool SimulatedPhone::settle(TimeInterval timeout) {
    return impl_->settle(deadlineAfter(timeout), Impl::Requests::awaited);
}

bool SimulatedPhone::settleQueues(TimeInterval timeout) {
    return impl_->settle(deadlineAfter(timeout), Impl::Requests::ignored);
}

void SimulatedPhone::advance(TimeInterval seconds) {
    if (!impl_->virtualClock) throw std::logic_error("the real clock cannot be advanced");
    const double target = now() + seconds;
    settle();
    for (auto due = impl_->mainQueue->nextDueTime(); due && *due <= target; due = impl_->mainQueue->nextDueTime()) {
        impl_->virtualClock->setNow(std::max(now(), *due));
        settle();
    }
    impl_->virtualClock->setNow(target);
    settle();
}

void SimulatedPhone::setClock(double now) {
    if (!impl_->virtualClock) throw std::logic_error("the real clock cannot be set");
    impl_->virtualClock->setNow(now);
}

double SimulatedPhone::now() const { return impl_->clock().now(); }

std::vector<double> SimulatedPhone::timers() const {
    auto times = impl_->mainQueue->dueTimes();
    for (auto& time : times) time -= now();
    return times;
}

std::vector<SimulatedPhone::SystemLogLine> SimulatedPhone::systemLog() const {
    const std::lock_guard lock(impl_->lines->mutex);
    return impl_->lines->systemLog;
}

std::vector<std::string> SimulatedPhone::console() const {
    const std::lock_guard lock(impl_->lines->mutex);
    return impl_->lines->console;
}

void SimulatedPhone::stop() {
    if (std::exchange(impl_->isStopped, true)) return;
    abandonWaits();
    const auto deadline = SteadyClock::now() + kShutdownTime;
    impl_->session->invalidate();
    // Its end cancels every request, and their handlers run.
    impl_->network.reset();
    impl_->settle(deadline, Impl::Requests::ignored);
    impl_->stopQueues(deadline);
    stopStorage(deadline);
    // An open prompt keeps whoever asked, who in turn keeps the user. Nobody hears the answer any more.
    auto& user = *impl_->user;
    while (!user.openPrompts().empty())
        user.answer(user.openPrompts().front().number, SimulatedUser::Answer::undetermined);
}

}  // namespace vorlane

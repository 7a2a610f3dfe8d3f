#include "Platform/Linux/LinuxPlatform.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <utility>
#include <vector>

#include "Platform/Internal/CallOutScope.h"
#include "Platform/Linux/Application/ExitGate.h"
#include "Platform/Linux/Application/LinuxApplication.h"
#include "Platform/Linux/Application/QuietUserNotificationCenter.h"
#include "Platform/Linux/Curl/CurlResolver.h"
#include "Platform/Linux/Curl/CurlURLSession.h"
#include "Platform/Linux/Device/LinuxDevice.h"
#include "Platform/Linux/Device/LinuxEnvironment.h"
#include "Platform/Linux/Device/LinuxOSLog.h"
#include "Platform/Linux/Location/LinuxLocationManager.h"
#include "Platform/Linux/Loop/HostMainQueue.h"
#include "Platform/Linux/Loop/LinuxClock.h"
#include "Platform/Linux/Loop/LinuxMainQueue.h"
#include "Platform/Linux/Loop/LinuxSerialQueue.h"
#include "Platform/NSBundle.h"
#include "Platform/NSFileManager.h"
#include "Platform/NSNotificationCenter.h"
#include "Platform/NSPropertyListSerialization.h"

namespace vorlane {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr const char* kScheduledNotificationsFile = "/VLScheduledNotifications.plist";
constexpr const char* kMonitoredRegionsFile = "/VLMonitoredRegions.plist";

// Measured from the start of a shutdown, which may take two seconds.
constexpr std::chrono::milliseconds kDrainTime{1600};
constexpr std::chrono::milliseconds kEndTime{1900};
constexpr std::chrono::milliseconds kShutdownTime{2000};
// The longest wait for one queue before the main queue, which it may wait for, runs again.
constexpr std::chrono::milliseconds kTurn{20};

/// Returns the objects that are still in use and removes the others.
template <class T>
std::vector<std::shared_ptr<T>> living(std::vector<std::weak_ptr<T>>& objects) {
    std::vector<std::shared_ptr<T>> result;
    std::erase_if(objects, [&result](const std::weak_ptr<T>& object) {
        if (auto alive = object.lock()) result.push_back(std::move(alive));
        return object.expired();
    });
    return result;
}

}  // namespace

struct LinuxPlatform::State {
    explicit State(Options givenOptions);

    std::shared_ptr<DispatchQueue> mainQueue() const;
    std::shared_ptr<NSBundle> mainBundle();
    const std::string& documentsFolder();
    std::vector<std::shared_ptr<CurlURLSession>> livingSessions();
    std::vector<std::shared_ptr<LinuxSerialQueue>> livingQueues();
    bool takeTurn(SteadyClock::time_point deadline);
    void end(SteadyClock::time_point deadline);

    // Fixed at construction.
    const Options options;
    const LinuxClock clock;
    // One of these two is null.
    const std::shared_ptr<LinuxMainQueue> ownQueue;
    const std::shared_ptr<HostMainQueue> hostQueue;
    const std::shared_ptr<NSNotificationCenter> notificationCenter = std::make_shared<NSNotificationCenter>();
    const std::shared_ptr<LinuxDevice> device = std::make_shared<LinuxDevice>();
    const std::shared_ptr<LinuxApplication> application;
    const std::shared_ptr<UNUserNotificationCenter> userNotificationCenter;

    std::once_flag applicationOnce;
    std::once_flag locationManagerOnce;
    std::shared_ptr<CLLocationManager> locationManager;
    std::once_flag bundleOnce;
    std::shared_ptr<NSBundle> bundle;
    std::once_flag folderOnce;
    std::string folder;

    std::mutex mutex;
    // Guarded by mutex.
    bool isStopping = false;
    bool hasEnded = false;
    std::vector<std::weak_ptr<CurlURLSession>> sessions;
    std::vector<std::weak_ptr<LinuxSerialQueue>> queues;
};

LinuxPlatform::State::State(Options givenOptions)
    : options(std::move(givenOptions)),
      ownQueue(options.mainQueue ? nullptr : std::make_shared<LinuxMainQueue>()),
      hostQueue(options.mainQueue ? std::make_shared<HostMainQueue>(options.mainQueue) : nullptr),
      application(std::make_shared<LinuxApplication>(
          notificationCenter, mainQueue(),
          LinuxApplication::Callbacks{options.registerForRemoteNotifications, options.setMinimumBackgroundFetchInterval,
                                      options.deliverLocalNotification, options.openURL})),
      userNotificationCenter(options.userNotificationCenter
                                 ? options.userNotificationCenter
                                 : std::make_shared<QuietUserNotificationCenter>(mainQueue())) {}

std::shared_ptr<DispatchQueue> LinuxPlatform::State::mainQueue() const {
    if (ownQueue) return ownQueue;
    return hostQueue;
}

std::shared_ptr<NSBundle> LinuxPlatform::State::mainBundle() {
    std::call_once(bundleOnce, [this] {
        const std::string programFolder = executableFolder();
        Dictionary info = options.infoDictionary;
        if (info.empty()) {
            info = NSPropertyListSerialization::dictionaryWithContentsOfFile(programFolder + "/Info.plist")
                       .value_or(Dictionary());
        }
        bundle = std::make_shared<NSBundle>(std::move(info),
                                            options.resourceFolder.empty() ? programFolder : options.resourceFolder);
    });
    return bundle;
}

const std::string& LinuxPlatform::State::documentsFolder() {
    std::call_once(folderOnce, [this] {
        folder = options.documentsFolder;
        if (!folder.empty()) return;
        const auto identifier = mainBundle()->bundleIdentifier();
        const std::string name = identifier && isFolderName(*identifier) ? *identifier : executableName();
        folder = applicationDataFolder(environmentVariable, homeFolder(environmentVariable), name);
    });
    return folder;
}

std::vector<std::shared_ptr<CurlURLSession>> LinuxPlatform::State::livingSessions() {
    const std::lock_guard lock(mutex);
    return living(sessions);
}

std::vector<std::shared_ptr<LinuxSerialQueue>> LinuxPlatform::State::livingQueues() {
    const std::lock_guard lock(mutex);
    return living(queues);
}

/// Lets every queue run for a short time; returns whether all of them are idle.
bool LinuxPlatform::State::takeTurn(SteadyClock::time_point deadline) {
    const auto runningSessions = livingSessions();
    const auto runningQueues = livingQueues();
    const auto turn = [deadline] { return std::min(deadline, SteadyClock::now() + kTurn); };
    for (const auto& session : runningSessions) session->waitUntilDelivered(turn());
    for (const auto& queue : runningQueues) queue->waitUntilIdle(turn());
    const bool isMainQueueIdle = (ownQueue ? ownQueue->poll() : hostQueue->poll()) == 0;
    return isMainQueueIdle && std::ranges::all_of(runningSessions, &CurlURLSession::hasDelivered) &&
           std::ranges::all_of(runningQueues, &LinuxSerialQueue::isIdle);
}

void LinuxPlatform::State::end(SteadyClock::time_point deadline) {
    {
        const std::lock_guard lock(mutex);
        hasEnded = true;
    }
    for (const auto& session : livingSessions()) session->close(deadline);
    for (const auto& queue : livingQueues()) queue->stop(deadline);
    if (ownQueue) ownQueue->close();
    if (hostQueue) hostQueue->close();
}

LinuxPlatform::LinuxPlatform() : LinuxPlatform(Options()) {}

LinuxPlatform::LinuxPlatform(Options options) : state_(std::make_unique<State>(std::move(options))) {}

LinuxPlatform::~LinuxPlatform() { LinuxPlatform::stop(); }

void LinuxPlatform::run() {
    if (state_->ownQueue) state_->ownQueue->run();
}

bool LinuxPlatform::runUntilIdle(TimeInterval timeout) {
    const auto& application = state_->application;
    const auto isIdle = [&application] { return application->backgroundTasks().empty(); };
    if (!state_->ownQueue) return isIdle();
    const LinuxApplication::EndOfTasksWatch watch(*application);
    return state_->ownQueue->runUntil(isIdle, timeout);
}

void LinuxPlatform::runFor(TimeInterval seconds) {
    if (state_->ownQueue) state_->ownQueue->runFor(seconds);
}

std::size_t LinuxPlatform::poll() { return state_->ownQueue ? state_->ownQueue->poll() : 0; }

void LinuxPlatform::stopRunning() {
    if (state_->ownQueue) state_->ownQueue->stopRunning();
}

double LinuxPlatform::systemVersion() const { return 12.0; }

const Clock& LinuxPlatform::clock() const { return state_->clock; }

std::shared_ptr<DispatchQueue> LinuxPlatform::mainQueue() { return state_->mainQueue(); }

std::shared_ptr<DispatchQueue> LinuxPlatform::makeSerialQueue(const std::string& label) {
    auto queue = std::make_shared<LinuxSerialQueue>(label);
    const std::lock_guard lock(state_->mutex);
    if (state_->hasEnded) {
        queue->stop(SteadyClock::now());
    } else {
        living(state_->queues);
        state_->queues.push_back(queue);
    }
    return queue;
}

std::string LinuxPlatform::documentsFolder() const { return state_->documentsFolder(); }

std::optional<double> LinuxPlatform::documentsCreationDate() const {
    return NSFileManager::creationDateOfItemAtPath(documentsFolder());
}

std::shared_ptr<NSURLSession> LinuxPlatform::makeURLSession(const NSURLSessionConfiguration& configuration) {
    const CurlCertificates certificates{state_->options.certificateFile, state_->options.certificateFolder};
    auto session = std::make_shared<CurlURLSession>(configuration, certificates, state_->options.proxy);
    const std::lock_guard lock(state_->mutex);
    if (state_->isStopping) session->cancelAll(SteadyClock::now());
    if (state_->hasEnded) session->close(SteadyClock::now());
    living(state_->sessions);
    state_->sessions.push_back(session);
    return session;
}

std::shared_ptr<UIApplication> LinuxPlatform::application() {
    std::call_once(state_->applicationOnce, [this] {
        state_->application->keepScheduledLocalNotifications(state_->documentsFolder() + kScheduledNotificationsFile);
    });
    return state_->application;
}

std::shared_ptr<UIDevice> LinuxPlatform::device() { return state_->device; }

std::shared_ptr<NSNotificationCenter> LinuxPlatform::notificationCenter() { return state_->notificationCenter; }

std::shared_ptr<NSBundle> LinuxPlatform::mainBundle() { return state_->mainBundle(); }

std::shared_ptr<UNUserNotificationCenter> LinuxPlatform::userNotificationCenter() {
    return state_->userNotificationCenter;
}

std::shared_ptr<CLLocationManager> LinuxPlatform::locationManager() {
    const CallOutScope scope;
    std::call_once(state_->locationManagerOnce, [this] {
        state_->locationManager =
            LinuxLocationManager::managerWith({.mainQueue = mainQueue(),
                                               .clock = std::make_shared<LinuxClock>(),
                                               .backEnd = state_->options.locationBackEnd,
                                               .regionsPath = state_->documentsFolder() + kMonitoredRegionsFile});
    });
    return state_->locationManager;
}

std::shared_ptr<OSLog> LinuxPlatform::makeOSLog(const std::string& subsystem, const std::string& category) {
    return std::make_shared<LinuxOSLog>(executableName(), subsystem, category);
}

void LinuxPlatform::NSLog(const std::string& line) {
    const std::string text = line + "\n";
    // One call per line, so that the lines of several threads do not mix.
    for (std::size_t written = 0; written < text.size();) {
        const ssize_t count = write(STDERR_FILENO, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        written += static_cast<std::size_t>(count);
    }
}

void LinuxPlatform::stop() {
    const auto start = SteadyClock::now();
    {
        const std::lock_guard lock(state_->mutex);
        if (std::exchange(state_->isStopping, true)) return;
    }
    abandonWaits();
    for (const auto& session : state_->livingSessions()) session->cancelAll(start + kDrainTime);
    while (!state_->takeTurn(start + kDrainTime) && SteadyClock::now() < start + kDrainTime) {
    }
    state_->end(start + kEndTime);
    CurlResolver::shared().waitUntilIdle(start + kEndTime);
    // A platform that the host keeps in a static object goes while the process exits, which waits for no flush.
    if (!ExitGate::shared().isClosed()) stopStorage(start + kShutdownTime);
}

std::shared_ptr<Platform> makeDefaultPlatform() { return std::make_shared<LinuxPlatform>(); }

}  // namespace vorlane

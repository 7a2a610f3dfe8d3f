#include "Simulator/Platform/SimulatedPhone.h"

#include <algorithm>
#include <chrono>
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
#include "Public/Vorlane.h"
#include "Simulator/Platform/Internal/CountingURLSession.h"
#include "Simulator/Platform/Internal/DocumentsFolder.h"
#include "Simulator/Platform/Internal/RealClock.h"
#include "Simulator/Platform/Internal/RegionCrossings.h"
#include "Simulator/Platform/Internal/SimulatedQueues.h"
#include "Simulator/Platform/Internal/SimulatedService.h"
#include "Simulator/Platform/Internal/SimulatedSystemLog.h"
#include "Simulator/Platform/Internal/VirtualClock.h"

namespace vorlane {

namespace {

constexpr std::chrono::seconds kShutdownTime{2};
constexpr const char* kMonitoredRegionsFile = "/VLMonitoredRegions.plist";
constexpr const char* kScheduledNotificationsFile = "/VLScheduledNotifications.plist";
constexpr double kAccuracyInMetres = 5;

/// Clamped to some thirty years, which the steady clock can represent.
SimulatedQueues::Deadline deadlineAfter(TimeInterval seconds) {
    const std::chrono::duration<double> length(std::clamp(seconds, 0.0, 1e9));
    return std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::steady_clock::duration>(length);
}

std::string versionText(double version) {
    auto text = std::to_string(version);
    while (text.ends_with('0') && !text.ends_with(".0")) text.pop_back();
    return text;
}

std::unique_ptr<LinuxPlatform> makeNetwork(const std::string& documentsFolder) {
    LinuxPlatform::Options options;
    options.documentsFolder = documentsFolder;
    return std::make_unique<LinuxPlatform>(options);
}

}  // namespace

struct SimulatedPhone::Impl {
    explicit Impl(Options given)
        : options(std::move(given)),
          documents(options.documentsFolder),
          virtualClock(options.virtualClock ? std::make_unique<VirtualClock>(*options.virtualClock) : nullptr),
          queues(clock(),
                 virtualClock ? SimulatedSerialQueue::Delays::PhoneTime : SimulatedSerialQueue::Delays::RealTime),
          user(std::make_shared<SimulatedUser>(
              [this](const std::string& event, const Dictionary& fields) { application->tell(event, fields); })),
          application(std::make_shared<SimulatedApplication>(notificationCenter, queues.mainQueue(), user)),
          userNotificationCenter(std::make_shared<SimulatedUserNotificationCenter>(
              user, queues.mainQueue(), queues.makeSerialQueue("UNUserNotificationCenter"),
              [observer = application](const std::string& event, const Dictionary& fields) {
                  observer->tell(event, fields);
              })),
          locationManager(std::make_shared<SimulatedLocationManager>(
              user, queues.mainQueue(), documents.path() + kMonitoredRegionsFile,
              [observer = application](const std::string& event, const Dictionary& fields) {
                  observer->tell(event, fields);
              })),
          device(std::make_shared<SimulatedDevice>(versionText(options.systemVersion))),
          bundle(std::make_shared<NSBundle>(options.infoDictionary, options.resourceFolder)),
          session(std::make_shared<ScriptedURLSession>(queues.makeSerialQueue("NSURLSession"))),
          service(session),
          crossings(locationManager, [this] { settle(deadlineAfter(kPatience)); }) {
        application->setKeyWindow(std::make_shared<UIWindow>(std::make_shared<UIViewController>()));
        // The caller's folder may have belonged to another phone before, and may belong to one later.
        if (!documents.isTemporary())
            application->keepScheduledLocalNotifications(documents.path() + kScheduledNotificationsFile);
        if (options.realHTTP) network = makeNetwork(documents.path());
    }

    const Clock& clock() const {
        if (virtualClock) return *virtualClock;
        return realClock;
    }

    bool settle(SimulatedQueues::Deadline deadline) {
        return queues.settle(deadline, [this] { return requestCount->isZero(); });
    }
    bool settleQueues(SimulatedQueues::Deadline deadline) {
        return queues.settle(deadline, [] { return true; });
    }

    static constexpr TimeInterval kPatience = 10;

    const Options options;
    const DocumentsFolder documents;
    const RealClock realClock;
    const std::unique_ptr<VirtualClock> virtualClock;
    const std::shared_ptr<SimulatedSystemLog> systemLog = std::make_shared<SimulatedSystemLog>();
    const std::shared_ptr<RequestCount> requestCount = std::make_shared<RequestCount>();
    const std::shared_ptr<NSNotificationCenter> notificationCenter = std::make_shared<NSNotificationCenter>();

    std::mutex mutex;
    // Guarded by mutex.
    std::optional<std::optional<double>> creationDate;

    // Each is thread-safe or used on the main thread only, as its class says.
    SimulatedQueues queues;
    const std::shared_ptr<SimulatedUser> user;
    const std::shared_ptr<SimulatedApplication> application;
    const std::shared_ptr<SimulatedUserNotificationCenter> userNotificationCenter;
    const std::shared_ptr<SimulatedLocationManager> locationManager;
    const std::shared_ptr<SimulatedDevice> device;
    const std::shared_ptr<NSBundle> bundle;
    const std::shared_ptr<ScriptedURLSession> session;
    SimulatedService service;

    // Main thread only.
    RegionCrossings crossings;
    std::function<void(const Dictionary&)> remoteNotificationHandler;
    // Real HTTP only: the platform whose network this phone uses, until the phone is stopped.
    std::unique_ptr<LinuxPlatform> network;
    bool isStopped = false;
};

SimulatedPhone::SimulatedPhone() : SimulatedPhone(Options()) {}

SimulatedPhone::SimulatedPhone(Options options) : impl_(std::make_unique<Impl>(std::move(options))) {}

SimulatedPhone::~SimulatedPhone() { SimulatedPhone::stop(); }

double SimulatedPhone::systemVersion() const { return impl_->options.systemVersion; }

const Clock& SimulatedPhone::clock() const { return impl_->clock(); }

std::shared_ptr<DispatchQueue> SimulatedPhone::mainQueue() { return impl_->queues.mainQueue(); }

std::shared_ptr<DispatchQueue> SimulatedPhone::makeSerialQueue(const std::string& label) {
    return impl_->queues.makeSerialQueue(label);
}

std::shared_ptr<NSTimer> SimulatedPhone::scheduledTimer(TimeInterval seconds, std::function<void()> block) {
    auto timer = std::make_shared<NSTimer>(std::move(block));
    const auto queue = impl_->queues.mainQueue();
    const auto token =
        queue->postAt(now() + seconds, SimulatedMainQueue::Kind::Application, [timer] { timer->fire(); });
    timer->setInvalidationHandler([queue, token] { queue->cancel(token); });
    return timer;
}

std::string SimulatedPhone::documentsFolder() const { return impl_->documents.path(); }

std::optional<double> SimulatedPhone::documentsCreationDate() const {
    {
        const std::lock_guard lock(impl_->mutex);
        if (impl_->creationDate) return *impl_->creationDate;
    }
    return NSFileManager::creationDateOfItemAtPath(impl_->documents.path());
}

void SimulatedPhone::setDocumentsCreationDate(std::optional<double> date) {
    const std::lock_guard lock(impl_->mutex);
    impl_->creationDate = date;
}

std::shared_ptr<NSURLSession> SimulatedPhone::makeURLSession(const NSURLSessionConfiguration& configuration) {
    if (!impl_->network) return impl_->session;
    return std::make_shared<CountingURLSession>(impl_->network->makeURLSession(configuration), impl_->requestCount,
                                                [queue = impl_->queues.mainQueue()] { queue->post([] {}); });
}

std::shared_ptr<UIApplication> SimulatedPhone::application() { return impl_->application; }

std::shared_ptr<UIDevice> SimulatedPhone::device() { return impl_->device; }

std::shared_ptr<NSNotificationCenter> SimulatedPhone::notificationCenter() { return impl_->notificationCenter; }

std::shared_ptr<NSBundle> SimulatedPhone::mainBundle() { return impl_->bundle; }

std::shared_ptr<OSLog> SimulatedPhone::makeOSLog(const std::string& subsystem, const std::string& category) {
    return impl_->systemLog->makeOSLog(subsystem, category);
}

std::shared_ptr<UNUserNotificationCenter> SimulatedPhone::userNotificationCenter() {
    return impl_->userNotificationCenter;
}

std::shared_ptr<CLLocationManager> SimulatedPhone::locationManager() { return impl_->locationManager; }

void SimulatedPhone::NSLog(const std::string& line) { impl_->systemLog->addConsoleLine(line); }

ScriptedURLSession& SimulatedPhone::session() { return *impl_->session; }

SimulatedApplication& SimulatedPhone::simulatedApplication() { return *impl_->application; }

SimulatedDevice& SimulatedPhone::simulatedDevice() { return *impl_->device; }

SimulatedUser& SimulatedPhone::simulatedUser() { return *impl_->user; }

SimulatedUserNotificationCenter& SimulatedPhone::simulatedUserNotificationCenter() {
    return *impl_->userNotificationCenter;
}

SimulatedLocationManager& SimulatedPhone::simulatedLocationManager() { return *impl_->locationManager; }

void SimulatedPhone::runMainQueue() { impl_->queues.mainQueue()->runDueTasks(); }

void SimulatedPhone::waitForMainQueue() { impl_->queues.mainQueue()->wait({.clockMoves = impl_->queues.clockMoves()}); }

bool SimulatedPhone::settle(TimeInterval timeout) { return impl_->settle(deadlineAfter(timeout)); }

bool SimulatedPhone::settleQueues(TimeInterval timeout) { return impl_->settleQueues(deadlineAfter(timeout)); }

void SimulatedPhone::advance(TimeInterval seconds) {
    if (!impl_->virtualClock) throw std::logic_error("the real clock cannot be advanced");
    const auto& queue = impl_->queues.mainQueue();
    const double target = now() + seconds;
    settle();
    for (auto due = queue->nextDueTime(); due && *due <= target; due = queue->nextDueTime()) {
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
    auto times = impl_->queues.mainQueue()->dueTimes();
    for (auto& time : times) time -= now();
    return times;
}

std::uint64_t SimulatedPhone::addInboxMessage(SimulatedInboxMessage message) {
    return impl_->service.addInboxMessage(std::move(message), now());
}

bool SimulatedPhone::removeInboxMessage(std::uint64_t messageId) {
    return impl_->service.removeInboxMessage(messageId);
}

std::vector<SimulatedInboxMessage> SimulatedPhone::inboxMessages() const { return impl_->service.inboxMessages(); }

void SimulatedPhone::addGeofence(SimulatedGeofence geofence) { impl_->service.addGeofence(std::move(geofence)); }

bool SimulatedPhone::removeGeofence(const std::string& identifier) { return impl_->service.removeGeofence(identifier); }

void SimulatedPhone::addBeacon(SimulatedBeacon beacon) { impl_->service.addBeacon(std::move(beacon)); }

void SimulatedPhone::moveTo(CLLocationCoordinate2D place) {
    impl_->crossings.moveTo({place, kAccuracyInMetres, now()});
}

void SimulatedPhone::detectBeacons(std::vector<CLBeacon> beacons) {
    impl_->crossings.detectBeacons(std::move(beacons));
}

void SimulatedPhone::receivePush(const SimulatedPush& push) {
    if (impl_->remoteNotificationHandler) {
        impl_->remoteNotificationHandler(push.userInfo());
    } else {
        Vorlane::didReceiveRemoteNotification(application(), push.userInfo());
    }
    settle();
}

void SimulatedPhone::openPush(const SimulatedPush& push) {
    auto& application = *impl_->application;
    if (application.applicationState() == UIApplicationState::Background) application.willEnterForeground();
    if (application.applicationState() == UIApplicationState::Active) application.willResignActive();
    receivePush(push);
    application.didBecomeActive();
    settle();
}

void SimulatedPhone::setRemoteNotificationHandler(std::function<void(const Dictionary& userInfo)> handler) {
    impl_->remoteNotificationHandler = std::move(handler);
}

std::vector<SystemLogLine> SimulatedPhone::systemLog() const { return impl_->systemLog->lines(); }

std::vector<std::string> SimulatedPhone::console() const { return impl_->systemLog->console(); }

void SimulatedPhone::stop() {
    if (std::exchange(impl_->isStopped, true)) return;
    abandonWaits();
    const auto deadline = std::chrono::steady_clock::now() + kShutdownTime;
    impl_->session->invalidate();
    // Cancels every request; their handlers run.
    impl_->network.reset();
    impl_->settleQueues(deadline);
    impl_->queues.stop(deadline);
    stopStorage(deadline);
    // The handler of an open prompt keeps the user alive. Its answer has no effect any more.
    auto& user = *impl_->user;
    while (!user.openPrompts().empty())
        user.answer(user.openPrompts().front().number, SimulatedUser::Answer::Undetermined);
}

}  // namespace vorlane

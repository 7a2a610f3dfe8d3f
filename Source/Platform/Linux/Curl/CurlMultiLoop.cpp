#include "Platform/Linux/Curl/CurlMultiLoop.h"

#include <curl/curl.h>
#include <pthread.h>

#include <cstddef>
#include <utility>

#include "Platform/Internal/QuietThread.h"
#include "Platform/Linux/Curl/CurlDataTask.h"
#include "Platform/Linux/Curl/CurlError.h"
#include "Platform/Linux/Curl/CurlMulti.h"
#include "Platform/Linux/Device/LinuxEnvironment.h"

namespace vorlane {

namespace {

constexpr std::chrono::seconds kLongestHalt{1};
constexpr std::size_t kMostHeldBack = 16;
constexpr const char* kNoThread = "The network thread could not be started";
constexpr const char* kNoMemory = "Too many requests are waiting";
constexpr const char* kNoDescriptor = "The network thread found no free file descriptor";

/// Once per process and never undone, because the host may use libcurl too.
void initialiseCurl() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

void joinEnded(std::thread thread) {
    if (thread.joinable()) thread.join();
}

}  // namespace

CurlMultiLoop::CurlMultiLoop(CurlSettings settings, Delivery delivery)
    : settings_(std::move(settings)), delivery_(std::move(delivery)) {}

CurlMultiLoop::~CurlMultiLoop() = default;

void CurlMultiLoop::start(std::shared_ptr<CurlDataTask> task) {
    // Without this task's own bytes: a single request may have any size.
    if (heldBytes_ - task->heldBytes() > kMostHeldBytes) return fail(*task, kNoMemory);
    std::unique_lock lock(mutex_);
    std::thread ended = phase_ == Phase::Unused ? startThread() : std::thread();
    const Phase phase = phase_;
    if (phase == Phase::Running) mail_.started.push_back(task);
    wake(std::move(lock));
    joinEnded(std::move(ended));
    // At exit, halted, the task stays as it is.
    if (phase == Phase::Stopped) deliver(task->endCancelled());
    if (phase == Phase::Unused) fail(*task, kNoThread);
}

void CurlMultiLoop::cancel(std::shared_ptr<CurlDataTask> task) {
    std::unique_lock lock(mutex_);
    if (phase_ != Phase::Running) return;
    mail_.cancelled.push_back(std::move(task));
    wake(std::move(lock));
}

void CurlMultiLoop::deliver(std::optional<CurlCompletion> completion) {
    if (!completion) return;
    std::vector<CurlCompletion> completions;
    completions.push_back(std::move(*completion));
    delivery_(std::move(completions));
}

void CurlMultiLoop::fail(CurlDataTask& task, const char* description) {
    deliver(task.endWithError(makeURLError(NSURLError::Unknown, description, task.request().URL)));
}

void CurlMultiLoop::stop(TimePoint deadline) { leave(std::unique_lock(mutex_), Phase::Stopped, deadline); }

void CurlMultiLoop::haltForExit() {
    leave(std::unique_lock(mutex_), Phase::Halted, std::chrono::steady_clock::now() + kLongestHalt);
}

void CurlMultiLoop::nameLookedUp(const CurlResolver::Answer& answer) {
    std::unique_lock lock(mutex_);
    if (phase_ != Phase::Running) return;
    mail_.names.push_back(answer);
    wake(std::move(lock));
}

/// Leaves the phase as it is if the system has no thread left. Returns the thread before, which has ended.
std::thread CurlMultiLoop::startThread() {
    if (!isWatched_ && !ExitGate::shared().watch(shared_from_this())) {
        phase_ = Phase::Halted;
        return {};
    }
    isWatched_ = true;
    std::thread ended = std::exchange(thread_, startQuietThread([self = shared_from_this()] { self->run(); }));
    hasThread_ = thread_.joinable();
    if (hasThread_) phase_ = Phase::Running;
    return ended;
}

/// Wakes the network thread if it sleeps; a thread that is at work looks into the mail by itself. The signal comes
/// after the lock, which the woken thread needs first.
void CurlMultiLoop::wake(std::unique_lock<std::mutex> lock) {
    const bool wasAsleep = std::exchange(isAsleep_, false);
    lock.unlock();
    if (wasAsleep) event_->signal();
}

void CurlMultiLoop::leave(std::unique_lock<std::mutex> lock, Phase phase, TimePoint deadline) {
    if (phase_ == Phase::Unused || phase_ == Phase::Running) phase_ = phase;
    if (std::exchange(isAsleep_, false)) event_->signal();
    const bool hasEnded = threadEnded_.wait_until(lock, deadline, [this] { return !hasThread_; });
    std::thread thread = std::move(thread_);
    lock.unlock();
    if (!thread.joinable()) return;
    hasEnded ? thread.join() : thread.detach();
}

void CurlMultiLoop::run() {
    pthread_setname_np(pthread_self(), "vorlane.network");
    initialiseCurl();
    makeMulti() ? runMulti() : failForWantOfDescriptors();
}

bool CurlMultiLoop::makeMulti() {
    CurlSettings settings = settings_;
    settings.certificates = settings.certificates.located(environmentVariable);
    event_ = std::make_unique<const EventDescriptor>();
    auto multi = std::make_unique<CurlMulti>(
        std::move(settings), *event_,
        [weakSelf = weak_from_this()](const auto& name) { CurlResolver::shared().lookUp(name, weakSelf); });
    // libcurl makes a multi handle without descriptors too, which cannot be woken then.
    if (event_->isOpen() && multi->isUsable()) multi_ = std::move(multi);
    return multi_ != nullptr;
}

/// Ends what has been started so far, and the thread. The next task starts another one.
void CurlMultiLoop::failForWantOfDescriptors() {
    Mail mail;
    {
        const std::lock_guard lock(mutex_);
        if (phase_ != Phase::Halted) std::swap(mail, mail_);
        if (phase_ == Phase::Running) phase_ = Phase::Unused;
        hasThread_ = false;
        threadEnded_.notify_all();
    }
    for (const auto& task : mail.started) fail(*task, kNoDescriptor);
}

void CurlMultiLoop::runMulti() {
    Mail mail;
    while (takeMail(mail)) {
        open(mail);
        multi_->step();
        // Held back for a while: waking the handlers' thread costs more than a small request.
        if (!multi_->isBusy() || multi_->completionCount() >= kMostHeldBack) delivery_(multi_->takeCompletions());
        if (!multi_->isBusy() && maySleep()) multi_->wait();
    }

    std::unique_lock lock(mutex_);
    if (phase_ == Phase::Stopped) {
        lock.unlock();
        open(mail);
        multi_->cancelAll();
        delivery_(multi_->takeCompletions());
        multi_.reset();
        lock.lock();
    }
    hasThread_ = false;
    threadEnded_.notify_all();
}

bool CurlMultiLoop::takeMail(Mail& mail) {
    const std::lock_guard lock(mutex_);
    isAsleep_ = false;
    // At exit everything stays where it is, above all the host's handlers.
    if (phase_ != Phase::Halted) std::swap(mail, mail_);
    return phase_ == Phase::Running;
}

void CurlMultiLoop::open(Mail& mail) {
    for (auto& task : mail.started) multi_->add(std::move(task));
    for (const auto& answer : mail.names) multi_->useAddresses(answer);
    for (const auto& task : mail.cancelled) multi_->cancel(*task);
    mail.started.clear();
    mail.names.clear();
    mail.cancelled.clear();
}

bool CurlMultiLoop::maySleep() {
    const std::lock_guard lock(mutex_);
    isAsleep_ = phase_ == Phase::Running && mail_.isEmpty();
    return isAsleep_;
}

}  // namespace vorlane

#include "Platform/Linux/Curl/CurlMultiLoop.h"

#include <curl/curl.h>
#include <pthread.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <system_error>
#include <utility>

#include "Platform/Linux/Curl/CurlDataTask.h"
#include "Platform/Linux/Curl/CurlError.h"
#include "Platform/Linux/Curl/CurlMulti.h"
#include "Platform/Linux/Device/LinuxEnvironment.h"

namespace vorlane {

namespace {

constexpr std::chrono::seconds kLongestHalt{1};
constexpr std::size_t kMostHeldBack = 16;

std::chrono::milliseconds millisecondsOf(TimeInterval seconds) {
    constexpr TimeInterval kUsual = 60;
    constexpr TimeInterval kLongest = 24 * 60 * 60;
    const TimeInterval length = seconds > 0 ? std::min(seconds, kLongest) : kUsual;
    return std::max(std::chrono::milliseconds(static_cast<std::int64_t>(length * 1000)), std::chrono::milliseconds(1));
}

/// Once in the process, and never undone: other users of libcurl may outlive us.
void initialiseCurl() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

/// Makes a thread that signals never interrupt: they are the host's to handle, and a peer's hang-up must not raise
/// SIGPIPE.
template <class Body>
std::thread makeQuietThread(Body body) {
    sigset_t all;
    sigset_t previous;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous);
    std::thread thread;
    try {
        thread = std::thread(std::move(body));
    } catch (const std::system_error&) {
        // Told by the thread that is none.
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    return thread;
}

}  // namespace

CurlMultiLoop::CurlMultiLoop(TimeInterval timeout, CurlCertificates certificates, Delivery delivery)
    : timeout_(millisecondsOf(timeout)), certificates_(std::move(certificates)), delivery_(std::move(delivery)) {}

CurlMultiLoop::~CurlMultiLoop() = default;

void CurlMultiLoop::start(std::shared_ptr<CurlDataTask> task) {
    std::unique_lock lock(mutex_);
    const bool hasThread = phase_ != Phase::unused || startThread();
    if (phase_ == Phase::running) {
        mail_.started.push_back(std::move(task));
        return wake();
    }
    const bool isExiting = phase_ == Phase::halted;
    lock.unlock();
    if (isExiting) return;
    if (hasThread) return deliver(task->endCancelled());
    deliver(task->endWithError(
        makeURLError(NSURLError::unknown, "The network thread could not be started", task->request().URL)));
}

void CurlMultiLoop::cancel(std::shared_ptr<CurlDataTask> task) {
    const std::lock_guard lock(mutex_);
    if (phase_ != Phase::running) return;
    mail_.cancelled.push_back(std::move(task));
    wake();
}

void CurlMultiLoop::deliver(std::optional<CurlCompletion> completion) {
    if (!completion) return;
    std::vector<CurlCompletion> completions;
    completions.push_back(std::move(*completion));
    delivery_(std::move(completions));
}

void CurlMultiLoop::stop(TimePoint deadline) { leave(std::unique_lock(mutex_), Phase::stopped, deadline); }

void CurlMultiLoop::haltForExit() {
    leave(std::unique_lock(mutex_), Phase::halted, std::chrono::steady_clock::now() + kLongestHalt);
}

bool CurlMultiLoop::startThread() {
    if (!ExitGate::shared().watch(shared_from_this())) {
        phase_ = Phase::halted;
        return true;
    }
    thread_ = makeQuietThread([self = shared_from_this()] { self->run(); });
    if (!thread_.joinable()) return false;
    hasThread_ = true;
    phase_ = Phase::running;
    return true;
}

void CurlMultiLoop::wake() {
    if (std::exchange(isAsleep_, false)) multi_->wake();
}

void CurlMultiLoop::leave(std::unique_lock<std::mutex> lock, Phase phase, TimePoint deadline) {
    if (phase_ == Phase::unused || phase_ == Phase::running) phase_ = phase;
    wake();
    const bool hasEnded = threadEnded_.wait_until(lock, deadline, [this] { return !hasThread_; });
    std::thread thread = std::move(thread_);
    lock.unlock();
    if (!thread.joinable()) return;
    hasEnded ? thread.join() : thread.detach();
}

void CurlMultiLoop::run() {
    pthread_setname_np(pthread_self(), "vorlane.network");
    initialiseCurl();
    multi_ = std::make_unique<CurlMulti>(timeout_, certificates_.located(environmentVariable));
    Mail mail;
    while (takeMail(mail)) {
        open(mail);
        multi_->step();
        // Waking the handlers' thread for each one would cost more than a small request does.
        if (!multi_->isBusy() || multi_->completionCount() >= kMostHeldBack) delivery_(multi_->takeCompletions());
        if (!multi_->isBusy() && maySleep()) multi_->wait();
    }

    std::unique_lock lock(mutex_);
    if (phase_ == Phase::stopped) {
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
    // At exit everything stays where it is, the host's handlers above all.
    if (phase_ != Phase::halted) std::swap(mail, mail_);
    return phase_ == Phase::running;
}

void CurlMultiLoop::open(Mail& mail) {
    for (auto& task : mail.started) multi_->add(std::move(task));
    for (const auto& task : mail.cancelled) multi_->cancel(*task);
    mail.started.clear();
    mail.cancelled.clear();
}

bool CurlMultiLoop::maySleep() {
    const std::lock_guard lock(mutex_);
    isAsleep_ = phase_ == Phase::running && mail_.started.empty() && mail_.cancelled.empty();
    return isAsleep_;
}

}  // namespace vorlane

#include "Platform/Linux/Application/ExitGate.h"

#include <openssl/crypto.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <utility>

namespace vorlane {

namespace {

constexpr std::chrono::milliseconds kLongestWaitAtExit{200};

// The number of gated tasks that this thread is running: exit() may be called by one, which must not wait for itself.
thread_local std::size_t tasksOfThisThread = 0;

/// Closes the gate when the main thread calls exit() or returns from main(): C++ destroys the objects of that thread
/// before all static ones, including statics that were made after the library started. pthread_exit() of the main
/// thread does not close the gate.
struct MainThreadWatch {
    MainThreadWatch() = default;
    MainThreadWatch(const MainThreadWatch&) = delete;
    MainThreadWatch& operator=(const MainThreadWatch&) = delete;
    ~MainThreadWatch() { ExitGate::shared().close(); }
    bool isSet = false;
};

void watchMainThread() {
    thread_local bool hasLooked = false;
    if (std::exchange(hasLooked, true) || gettid() != getpid()) return;
    thread_local MainThreadWatch watch;
    watch.isSet = true;
}

}  // namespace

ExitGate::Worker::~Worker() = default;

ExitGate& ExitGate::shared() {
    static ExitGate* const gate = new ExitGate;
    return *gate;
}

void ExitGate::arm() {
    watchMainThread();
    if (isArmed_.load(std::memory_order_relaxed) || isArmed_.exchange(true)) return;
    process_ = getpid();
    // Exit handlers run newest first, so this one must be registered after that of OpenSSL. The option is the cheapest
    // way to make OpenSSL register its handler now; without any option the call has no effect.
    OPENSSL_init_crypto(OPENSSL_INIT_ATFORK, nullptr);
    std::atexit([] { ExitGate::shared().close(); });
}

bool ExitGate::watch(const std::shared_ptr<Worker>& worker) {
    arm();
    const std::lock_guard lock(mutex_);
    if (isClosed_) return false;
    std::erase_if(workers_, [](const std::weak_ptr<Worker>& other) { return other.expired(); });
    workers_.push_back(worker);
    return true;
}

bool ExitGate::run(std::function<void()> task) {
    if (!enter()) {
        // The destructors of captured host objects must not run now either.
        putAside(std::move(task));
        return false;
    }
    // Also leaves if the task throws.
    const std::unique_ptr<ExitGate, void (*)(ExitGate*)> inside(this, [](ExitGate* gate) { gate->leave(); });
    if (task) task();
    task = nullptr;
    return true;
}

void ExitGate::putAside(std::function<void()> task) {
    const std::lock_guard lock(mutex_);
    tasksPutAside_.push_back(std::move(task));
}

bool ExitGate::enter() {
    ++running_;
    if (isClosed_) {
        --running_;
        return false;
    }
    ++tasksOfThisThread;
    return true;
}

void ExitGate::leave() {
    --tasksOfThisThread;
    --running_;
    if (!isClosed_) return;
    const std::lock_guard lock(mutex_);
    left_.notify_all();
}

void ExitGate::close() {
    if (isClosed_.exchange(true)) return;
    // A forked child has none of the threads, and its locks may be held by them.
    if (process_ != getpid()) return;
    haltWorkers();
    std::unique_lock lock(mutex_);
    left_.wait_for(lock, kLongestWaitAtExit, [this] { return running_ <= tasksOfThisThread; });
}

void ExitGate::haltWorkers() {
    std::vector<std::shared_ptr<Worker>> workers;
    {
        const std::lock_guard lock(mutex_);
        for (const auto& worker : workers_) {
            if (auto alive = worker.lock()) haltedWorkers_.push_back(std::move(alive));
        }
        workers = haltedWorkers_;
    }
    for (const auto& worker : workers) worker->haltForExit();
}

}  // namespace vorlane

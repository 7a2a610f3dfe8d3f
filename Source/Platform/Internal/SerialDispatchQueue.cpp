#include "Platform/Internal/SerialDispatchQueue.h"

#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace vorlane {

using SteadyClock = std::chrono::steady_clock;

namespace {

/// When a task is due; delays beyond what the clock can count are held to some thirty years.
SteadyClock::time_point dueAfter(TimeInterval delay) {
    constexpr TimeInterval kLongest = 1e9;
    return SteadyClock::now() +
           std::chrono::duration_cast<SteadyClock::duration>(std::chrono::duration<double>(std::min(delay, kLongest)));
}

/// Waits for a thread that has come to rest, outside every lock: what it let go of last, in thread-local objects of the
/// host, may post to the queue once more.
void letGo(std::thread ended) {
    if (!ended.joinable()) return;
    if (ended.get_id() == std::this_thread::get_id()) return ended.detach();
    ended.join();
}

}  // namespace

struct SerialDispatchQueue::State {
    State(std::string name, std::chrono::milliseconds rest) : label(std::move(name)), longestRest(rest) {}

    const std::string label;
    const std::chrono::milliseconds longestRest;

    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    // Guarded by mutex.
    std::deque<std::function<void()>> tasks;
    std::multimap<SteadyClock::time_point, std::function<void()>> delayed;
    bool isRunningTask = false;
    bool isStopping = false;
    bool hasEnded = false;
    std::thread thread;
    // Nobody's before the thread runs and after it has ended, because the system gives an ended thread's id out again.
    std::thread::id threadId;

    bool isIdle() const { return tasks.empty() && !isRunningTask && !isDue(); }
    bool isDue() const { return !delayed.empty() && delayed.begin()->first <= SteadyClock::now(); }
    bool hasThread() const { return thread.joinable() && !hasEnded; }

    /// Signals are the host's to handle: the thread blocks them all, from its first instruction on. Gives the thread
    /// before it, which came to rest.
    std::thread startThread(std::shared_ptr<State> self) {
        std::thread ended = std::move(thread);
        hasEnded = false;
        sigset_t all;
        sigset_t previous;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &previous);
        try {
            thread = std::thread([self = std::move(self)] { self->run(); });
        } catch (const std::system_error&) {
            // Out of threads: what is queued waits until a later post can start one.
        }
        pthread_sigmask(SIG_SETMASK, &previous, nullptr);
        return ended;
    }

    void takeDueTasks() {
        while (isDue()) {
            tasks.push_back(std::move(delayed.begin()->second));
            delayed.erase(delayed.begin());
        }
    }

    /// Returns whether the thread is still needed.
    bool waitForWork(std::unique_lock<std::mutex>& lock) const {
        if (!delayed.empty()) {
            changed.wait_until(lock, delayed.begin()->first);
            return true;
        }
        return changed.wait_for(lock, longestRest, [this] { return isStopping || !tasks.empty() || !delayed.empty(); });
    }

    void runNext(std::unique_lock<std::mutex>& lock) {
        auto task = std::move(tasks.front());
        tasks.pop_front();
        isRunningTask = true;
        lock.unlock();
        task();
        // What the task holds goes away on this queue, before the queue counts as idle.
        task = nullptr;
        lock.lock();
        isRunningTask = false;
        if (isIdle()) changed.notify_all();
    }

    void run() {
        pthread_setname_np(pthread_self(), label.substr(0, 15).c_str());
        std::unique_lock lock(mutex);
        threadId = std::this_thread::get_id();
        while (true) {
            takeDueTasks();
            if (!tasks.empty()) {
                runNext(lock);
            } else if (isStopping || !waitForWork(lock)) {
                break;
            }
        }
        threadId = {};
        hasEnded = true;
        changed.notify_all();
    }
};

SerialDispatchQueue::SerialDispatchQueue(std::string label, std::chrono::milliseconds longestRest)
    : state_(std::make_shared<State>(std::move(label), longestRest)) {}

SerialDispatchQueue::~SerialDispatchQueue() { stop(SteadyClock::now() + std::chrono::seconds(2)); }

void SerialDispatchQueue::post(std::function<void()> task) { SerialDispatchQueue::postAfter(0, std::move(task)); }

void SerialDispatchQueue::postAfter(TimeInterval delay, std::function<void()> task) {
    if (!task) return;
    std::thread ended;
    {
        const std::lock_guard lock(state_->mutex);
        if (state_->isStopping) return;
        if (delay > 0) {
            state_->delayed.emplace(dueAfter(delay), std::move(task));
        } else {
            state_->tasks.push_back(std::move(task));
        }
        if (!state_->hasThread()) ended = state_->startThread(state_);
        state_->changed.notify_all();
    }
    letGo(std::move(ended));
}

bool SerialDispatchQueue::isCurrent() const {
    const std::lock_guard lock(state_->mutex);
    return state_->threadId == std::this_thread::get_id();
}

bool SerialDispatchQueue::isIdle() const {
    const std::lock_guard lock(state_->mutex);
    return state_->isIdle();
}

bool SerialDispatchQueue::waitUntilIdle(SteadyClock::time_point deadline) const {
    std::unique_lock lock(state_->mutex);
    return state_->changed.wait_until(lock, deadline, [this] { return state_->isIdle(); });
}

void SerialDispatchQueue::stop(SteadyClock::time_point deadline) {
    std::thread thread;
    // Dropped outside the lock: destroying a task may run the code of whoever posted it.
    decltype(state_->tasks) droppedTasks;
    decltype(state_->delayed) droppedDelayed;
    {
        std::unique_lock lock(state_->mutex);
        state_->isStopping = true;
        state_->delayed.swap(droppedDelayed);
        state_->changed.notify_all();
        // Its own thread cannot wait for itself, and of several callers only one gets the thread.
        if (state_->threadId != std::this_thread::get_id()) {
            state_->changed.wait_until(lock, deadline, [this] { return !state_->hasThread(); });
        }
        state_->tasks.swap(droppedTasks);
        thread = std::move(state_->thread);
        if (thread.joinable() && !state_->hasEnded) thread.detach();
        state_->changed.notify_all();
    }
    if (thread.joinable()) thread.join();
}

}  // namespace vorlane

#include "Platform/Internal/SerialDispatchQueue.h"

#include <pthread.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "Platform/Internal/QuietThread.h"

namespace vorlane {

using SteadyClock = std::chrono::steady_clock;

namespace {

/// When a task is due. Delays beyond what the clock can count are clamped to some thirty years.
SteadyClock::time_point dueAfter(TimeInterval delay) {
    constexpr TimeInterval kLongest = 1e9;
    return SteadyClock::now() +
           std::chrono::duration_cast<SteadyClock::duration>(std::chrono::duration<double>(std::min(delay, kLongest)));
}

/// Joins a thread that has come to rest. Outside every lock, because destructors of the host's thread-local objects may
/// still post to the queue.
void joinEnded(std::thread ended) {
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
    // Empty before the thread runs and after it has ended: the system reuses the ids of ended threads.
    std::thread::id threadId;

    bool isIdle() const { return tasks.empty() && !isRunningTask && !isDue(); }
    bool isDue() const { return !delayed.empty() && delayed.begin()->first <= SteadyClock::now(); }
    bool hasThread() const { return thread.joinable() && !hasEnded; }

    /// Returns the thread that came to rest before. Out of threads, what is queued waits for a later post.
    std::thread startThread(std::shared_ptr<State> self) {
        std::thread ended = std::move(thread);
        hasEnded = false;
        thread = startQuietThread([self = std::move(self)] { self->run(); });
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
            // A copy: the task may be dropped during the wait.
            const auto due = delayed.begin()->first;
            changed.wait_until(lock, due);
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
        // Its captures are destroyed on this queue, before the queue counts as idle.
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
    joinEnded(std::move(ended));
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
    // Destroyed outside the lock: a task's captures may be the host's.
    decltype(state_->tasks) droppedTasks;
    decltype(state_->delayed) droppedDelayed;
    {
        std::unique_lock lock(state_->mutex);
        state_->isStopping = true;
        state_->delayed.swap(droppedDelayed);
        state_->changed.notify_all();
        // The queue's own thread cannot wait for itself. Of several callers only one receives the thread.
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

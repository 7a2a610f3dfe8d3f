#include "Platform/SerialDispatchQueue.h"

#include <pthread.h>

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace vorlane {

using SteadyClock = std::chrono::steady_clock;

struct SerialDispatchQueue::State {
    explicit State(std::string name) : label(std::move(name)) {}

    const std::string label;

    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    // Guarded by mutex.
    std::deque<std::function<void()>> tasks;
    std::multimap<SteadyClock::time_point, std::function<void()>> delayed;
    bool isRunningTask = false;
    bool isStopping = false;
    bool hasEnded = false;
    std::thread thread;
    std::thread::id threadId;

    bool isIdle() const { return tasks.empty() && !isRunningTask && (delayed.empty() || !isDue()); }
    bool isDue() const { return !delayed.empty() && delayed.begin()->first <= SteadyClock::now(); }

    void takeDueTasks() {
        while (isDue()) {
            tasks.push_back(std::move(delayed.begin()->second));
            delayed.erase(delayed.begin());
        }
    }

    void waitForWork(std::unique_lock<std::mutex>& lock) const {
        if (delayed.empty()) {
            changed.wait(lock);
        } else {
            changed.wait_until(lock, delayed.begin()->first);
        }
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
            } else if (isStopping) {
                break;
            } else {
                waitForWork(lock);
            }
        }
        hasEnded = true;
        changed.notify_all();
    }
};

SerialDispatchQueue::SerialDispatchQueue(std::string label) : state_(std::make_shared<State>(std::move(label))) {}

SerialDispatchQueue::~SerialDispatchQueue() { stop(SteadyClock::now() + std::chrono::seconds(2)); }

void SerialDispatchQueue::post(std::function<void()> task) { postAfter(0, std::move(task)); }

void SerialDispatchQueue::postAfter(TimeInterval delay, std::function<void()> task) {
    const std::lock_guard lock(state_->mutex);
    if (state_->isStopping) return;
    if (delay > 0) {
        const auto due = SteadyClock::now() +
                         std::chrono::duration_cast<SteadyClock::duration>(std::chrono::duration<double>(delay));
        state_->delayed.emplace(due, std::move(task));
    } else {
        state_->tasks.push_back(std::move(task));
    }
    if (!state_->thread.joinable()) state_->thread = std::thread([state = state_] { state->run(); });
    state_->changed.notify_all();
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
        if (!state_->thread.joinable()) return;
        const bool isOwnThread = state_->threadId == std::this_thread::get_id();
        if (!isOwnThread) state_->changed.wait_until(lock, deadline, [this] { return state_->hasEnded; });
        state_->tasks.swap(droppedTasks);
        thread = std::move(state_->thread);
        if (!state_->hasEnded) {
            thread.detach();
            return;
        }
    }
    thread.join();
}

}  // namespace vorlane

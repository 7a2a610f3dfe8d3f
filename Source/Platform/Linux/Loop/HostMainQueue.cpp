#include "Platform/Linux/Loop/HostMainQueue.h"

#include <deque>
#include <mutex>
#include <utility>

#include "Platform/Linux/Application/ExitGate.h"

namespace vorlane {

struct HostMainQueue::Door {
    /// Runs the oldest task; returns whether there was one.
    bool runNext() {
        std::unique_lock lock(mutex);
        if (tasks.empty()) return false;
        auto task = std::move(tasks.front());
        tasks.pop_front();
        lock.unlock();
        ExitGate::shared().run(std::move(task));
        return true;
    }

    std::size_t count() {
        const std::lock_guard lock(mutex);
        return tasks.size();
    }

    std::atomic<bool> isClosed = false;
    std::mutex mutex;
    // Guarded by mutex.
    std::deque<std::function<void()>> tasks;
};

HostMainQueue::HostMainQueue(std::shared_ptr<DispatchQueue> queue)
    : queue_(std::move(queue)), door_(std::make_shared<Door>()) {}

HostMainQueue::~HostMainQueue() = default;

void HostMainQueue::post(std::function<void()> task) {
    {
        const std::lock_guard lock(door_->mutex);
        if (door_->isClosed) return;
        door_->tasks.push_back(std::move(task));
    }
    queue_->post([door = door_] { door->runNext(); });
}

void HostMainQueue::postAfter(TimeInterval delay, std::function<void()> task) {
    if (door_->isClosed) return;
    queue_->postAfter(delay, [door = door_, task = std::move(task)]() mutable {
        if (!door->isClosed) ExitGate::shared().run(std::move(task));
    });
}

bool HostMainQueue::isCurrent() const { return pollingThread_ == std::this_thread::get_id() || queue_->isCurrent(); }

std::size_t HostMainQueue::poll() {
    pollingThread_ = std::this_thread::get_id();
    std::size_t count = 0;
    for (std::size_t left = door_->count(); left > 0 && door_->runNext(); --left) ++count;
    pollingThread_ = std::thread::id();
    return count;
}

void HostMainQueue::close() {
    // Destroyed after the lock is released: a task's captures may be the host's.
    decltype(door_->tasks) dropped;
    const std::lock_guard lock(door_->mutex);
    door_->isClosed = true;
    door_->tasks.swap(dropped);
}

}  // namespace vorlane

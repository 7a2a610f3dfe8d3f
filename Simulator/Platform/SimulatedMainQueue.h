#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "Platform/Clock.h"
#include "Platform/DispatchQueue.h"

namespace vorlane {

/// Counts what was ever posted to any queue of a phone, so that it can tell whether anything happened meanwhile.
using ActivityCounter = std::atomic<std::uint64_t>;

/// The simulated phone's main queue: runs nothing by itself, only when its thread (the one that made it) says so. Any
/// thread may post.
class SimulatedMainQueue : public DispatchQueue {
public:
    SimulatedMainQueue(const Clock& clock, std::shared_ptr<ActivityCounter> activity);

    void post(std::function<void()> task) override;
    void postAfter(TimeInterval delay, std::function<void()> task) override;
    bool isCurrent() const override { return thread_ == std::this_thread::get_id(); }

    /// Runs what is due, and what that makes due, until nothing is.
    void runDueTasks();
    /// Waits until something is due by the clock (a virtual one does not move by itself) or the deadline passes.
    void waitForDueTask(std::optional<std::chrono::steady_clock::time_point> deadline);

    bool hasDueTask() const;
    /// When the next delayed task is due; nothing when there is none.
    std::optional<double> nextDueTime() const;
    /// When each delayed task is due, ascending.
    std::vector<double> dueTimes() const;

    /// Drops what is queued; later posts are dropped.
    void stop();

private:
    std::function<void()> takeDueTask();
    bool isDue() const;

    // Fixed at construction.
    const Clock& clock_;
    const std::shared_ptr<ActivityCounter> activity_;
    const std::thread::id thread_ = std::this_thread::get_id();

    mutable std::mutex mutex_;
    std::condition_variable posted_;
    // Guarded by mutex_.
    std::deque<std::function<void()>> tasks_;
    // By the time on the phone's clock; of equal times the one posted first comes first.
    std::multimap<double, std::function<void()>> delayed_;
    bool isStopped_ = false;
};

}  // namespace vorlane

#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
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
class SimulatedMainQueue : public DispatchQueue, public std::enable_shared_from_this<SimulatedMainQueue> {
public:
    SimulatedMainQueue(const Clock& clock, std::shared_ptr<ActivityCounter> activity);

    void post(std::function<void()> task) override;
    void postAfter(TimeInterval delay, std::function<void()> task) override;
    /// What is delayed: work of the application, which `dueTimes()` lists, or the phone's own.
    enum class Kind { application, phone };
    using Token = std::uint64_t;
    /// Runs `task` once the clock shows `time`, unless it is cancelled before.
    Token postAt(double time, Kind kind, std::function<void()> task);
    /// An unknown token, and one whose task has run, are ignored.
    void cancel(Token token);
    bool isCurrent() const override { return thread_ == std::this_thread::get_id(); }

    /// The time on the phone's clock.
    double now() const { return clock_.now(); }

    /// Runs what is due, and what that makes due, until nothing is or the deadline has passed.
    void runDueTasks(std::optional<std::chrono::steady_clock::time_point> deadline = std::nullopt);

    /// What a waiting thread waits for, besides a due task.
    struct WaitOptions {
        std::optional<std::chrono::steady_clock::time_point> deadline = std::nullopt;
        /// Whether the clock moves meanwhile, so that a delayed task may fall due.
        bool clockMoves = true;
        /// Asked again after each post and each end of work elsewhere; must not call this queue's locking operations.
        std::function<bool()> isEnough = {};
    };
    /// Waits until something is due, or what the options say has come.
    void wait(const WaitOptions& options);

    /// Counts work that is under way on another thread, until the token is gone; its end wakes a waiting thread.
    std::shared_ptr<void> beginWorkElsewhere();
    /// Takes no lock.
    bool hasWorkElsewhere() const { return workElsewhere_ > 0; }

    bool hasDueTask() const;
    /// When the next delayed task is due; nothing when there is none.
    std::optional<double> nextDueTime() const;
    /// When each delayed task of the application is due, ascending.
    std::vector<double> dueTimes() const;

    /// Drops what is queued; later posts are dropped.
    void stop();

private:
    struct DelayedTask {
        Token token;
        Kind kind;
        std::function<void()> task;
    };

    std::function<void()> takeDueTask();
    bool isDue() const;
    std::optional<std::chrono::steady_clock::time_point> wakeTime(const WaitOptions& options) const;
    void endWorkElsewhere();

    // Fixed at construction.
    const Clock& clock_;
    const std::shared_ptr<ActivityCounter> activity_;
    const std::thread::id thread_ = std::this_thread::get_id();
    std::atomic<std::size_t> workElsewhere_ = 0;

    mutable std::mutex mutex_;
    std::condition_variable posted_;
    // Guarded by mutex_.
    std::deque<std::function<void()>> tasks_;
    // By the time on the phone's clock; of equal times the one posted first comes first.
    std::multimap<double, DelayedTask> delayed_;
    Token newestToken_ = 0;
    bool isStopped_ = false;
};

}  // namespace vorlane

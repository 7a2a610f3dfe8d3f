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

/// The number of tasks ever posted to any queue of a phone. Comparing two readings shows whether anything was posted
/// in between.
using ActivityCounter = std::atomic<std::uint64_t>;

/// The simulated phone's main queue. Tasks run only inside `runDueTasks()`, which its main thread (the thread that made
/// the queue) calls. Any thread may post.
class SimulatedMainQueue : public DispatchQueue, public std::enable_shared_from_this<SimulatedMainQueue> {
public:
    SimulatedMainQueue(const Clock& clock, std::shared_ptr<ActivityCounter> activity);

    void post(std::function<void()> task) override;
    void postAfter(TimeInterval delay, std::function<void()> task) override;
    /// Who owns a delayed task: the application, whose tasks `dueTimes()` lists, or the phone itself.
    enum class Kind { Application, Phone };
    using Token = std::uint64_t;
    /// Runs `task` once the clock has reached `time`, unless it is cancelled first.
    Token postAt(double time, Kind kind, std::function<void()> task);
    /// An unknown token, or the token of a task that has run, is ignored.
    void cancel(Token token);
    bool isCurrent() const override { return thread_ == std::this_thread::get_id(); }

    /// The time on the phone's clock.
    double now() const { return clock_.now(); }

    /// Runs due tasks, and the tasks that become due meanwhile, until none is left or the deadline has passed.
    void runDueTasks(std::optional<std::chrono::steady_clock::time_point> deadline = std::nullopt);

    /// What ends a wait, besides a due task.
    struct WaitOptions {
        std::optional<std::chrono::steady_clock::time_point> deadline = std::nullopt;
        /// Whether the clock advances during the wait, so that a delayed task may become due.
        bool clockMoves = true;
        /// Called again after each post and each end of work elsewhere. Must not call an operation of this queue that
        /// locks.
        std::function<bool()> isEnough = {};
    };
    /// Blocks until a task is due or a condition of the options holds.
    void wait(const WaitOptions& options);

    /// Counts work on another thread until the token is destroyed, which wakes a waiting thread.
    std::shared_ptr<void> beginWorkElsewhere();
    /// Takes no lock.
    bool hasWorkElsewhere() const { return workElsewhere_ > 0; }

    bool hasDueTask() const;
    /// The due time of the next delayed task, or `nullopt` without one.
    std::optional<double> nextDueTime() const;
    /// The due times of the application's delayed tasks, ascending.
    std::vector<double> dueTimes() const;

    /// Drops queued tasks and every task posted later.
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
    // By due time on the phone's clock; equal times in the order of posting.
    std::multimap<double, DelayedTask> delayed_;
    Token newestToken_ = 0;
    bool isStopped_ = false;
};

}  // namespace vorlane

#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "Platform/DispatchQueue.h"

namespace vorlane {

/// A serial queue on one named thread at a time, started by the first task. A thread that has been idle for
/// `longestRest` ends; the next task starts another.
class VORLANE_EXPORT SerialDispatchQueue : public DispatchQueue {
public:
    static constexpr std::chrono::milliseconds kLongestRest = std::chrono::seconds(10);

    explicit SerialDispatchQueue(std::string label, std::chrono::milliseconds longestRest = kLongestRest);
    /// Stops as `stop()` does.
    ~SerialDispatchQueue() override;

    void post(std::function<void()> task) override;
    /// Measures the delay by the machine's steady clock.
    void postAfter(TimeInterval delay, std::function<void()> task) override;
    bool isCurrent() const override;

    /// Whether no task is running or waiting. A delayed task counts once it is due.
    bool isIdle() const;

    /// Waits until `isIdle()` or the deadline and returns whether the queue is idle. Not to be called on the queue.
    bool waitUntilIdle(std::chrono::steady_clock::time_point deadline) const;

    /// Runs queued tasks until the deadline, drops the others and all delayed tasks, and joins the thread. Later posts
    /// are dropped. A task that still runs at the deadline ends on its detached thread, which runs no other task.
    void stop(std::chrono::steady_clock::time_point deadline);

private:
    struct State;
    const std::shared_ptr<State> state_;
};

}  // namespace vorlane

#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "Platform/DispatchQueue.h"

namespace vorlane {

/// A serial queue on one named thread at a time, which starts with the first task. A thread that has had nothing to do
/// for a while ends; the next task starts another.
class VORLANE_EXPORT SerialDispatchQueue : public DispatchQueue {
public:
    static constexpr std::chrono::milliseconds kLongestRest = std::chrono::seconds(10);

    explicit SerialDispatchQueue(std::string label, std::chrono::milliseconds longestRest = kLongestRest);
    /// Stops as `stop()` does.
    ~SerialDispatchQueue() override;

    void post(std::function<void()> task) override;
    /// The delay runs on the steady clock of the machine.
    void postAfter(TimeInterval delay, std::function<void()> task) override;
    bool isCurrent() const override;

    /// Whether no task is running or waiting (a delayed one that is not due does not count).
    bool isIdle() const;

    /// Waits until `isIdle()` or the deadline; returns whether it is idle. Not to be called from the queue itself.
    bool waitUntilIdle(std::chrono::steady_clock::time_point deadline) const;

    /// Runs what is queued until the deadline, drops the rest and delayed tasks, and joins the thread. Later posts are
    /// dropped. A task that still runs at the deadline is left to end by itself on its detached thread; nothing runs
    /// after it.
    void stop(std::chrono::steady_clock::time_point deadline);

private:
    struct State;
    const std::shared_ptr<State> state_;
};

}  // namespace vorlane

#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <vector>

#include "Platform/Linux/Curl/CurlCompletion.h"
#include "Platform/Linux/Loop/LinuxSerialQueue.h"

namespace vorlane {

/// Runs the handlers of one session one after another, on a thread that starts with the first. Any thread.
class CurlHandlerQueue : public std::enable_shared_from_this<CurlHandlerQueue> {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// Has the handlers called later, in this order. Taken together, many cost little more than one.
    void deliver(std::vector<CurlCompletion> completions);

    /// Whether a handler is calling.
    bool isCurrent() const { return queue_.isCurrent(); }
    /// Whether no handler is running or waiting.
    bool isIdle() const { return queue_.isIdle(); }
    /// Waits until `isIdle()` or the deadline; returns whether it holds. Not to be called from a handler.
    bool waitUntilIdle(TimePoint deadline) const { return queue_.waitUntilIdle(deadline); }

    /// Runs what is waiting until the deadline; no handler starts afterwards.
    void stop(TimePoint deadline);

private:
    void run(const std::shared_ptr<std::vector<CurlCompletion>>& completions) const;

    LinuxSerialQueue queue_{"vorlane.session"};
    std::atomic<bool> isStopped_ = false;
};

}  // namespace vorlane

#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <vector>

#include "Platform/Linux/Curl/CurlCompletion.h"
#include "Platform/Linux/Loop/LinuxSerialQueue.h"

namespace vorlane {

/// Runs the handlers of one session one after another, on a thread started by the first. Any thread.
class CurlHandlerQueue : public std::enable_shared_from_this<CurlHandlerQueue> {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// Calls the handlers later, in this order. A batch costs little more than one completion.
    void deliver(std::vector<CurlCompletion> completions);

    /// Whether the calling code runs in a handler.
    bool isCurrent() const { return queue_.isCurrent(); }
    /// Whether no handler is running or waiting.
    bool isIdle() const { return queue_.isIdle(); }
    /// Waits until `isIdle()` or the deadline and returns `isIdle()`. Not to be called from a handler.
    bool waitUntilIdle(TimePoint deadline) const { return queue_.waitUntilIdle(deadline); }

    /// Runs waiting handlers until the deadline. No handler starts afterwards.
    void stop(TimePoint deadline);

private:
    void run(const std::shared_ptr<std::vector<CurlCompletion>>& completions) const;

    LinuxSerialQueue queue_{"vorlane.session"};
    std::atomic<bool> isStopped_ = false;
};

}  // namespace vorlane

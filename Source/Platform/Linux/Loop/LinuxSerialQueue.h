#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "Platform/Internal/SerialDispatchQueue.h"

namespace vorlane {

/// A serial queue on its own thread that starts no task once the process exits.
class LinuxSerialQueue : public DispatchQueue {
public:
    explicit LinuxSerialQueue(std::string label);

    void post(std::function<void()> task) override;
    void postAfter(TimeInterval delay, std::function<void()> task) override;
    bool isCurrent() const override { return queue_.isCurrent(); }

    bool isIdle() const { return queue_.isIdle(); }
    bool waitUntilIdle(std::chrono::steady_clock::time_point deadline) const { return queue_.waitUntilIdle(deadline); }
    /// Runs queued tasks until the deadline and joins the thread; see `SerialDispatchQueue::stop()`.
    void stop(std::chrono::steady_clock::time_point deadline) { queue_.stop(deadline); }

private:
    SerialDispatchQueue queue_;
};

}  // namespace vorlane

#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "Platform/DispatchQueue.h"

namespace vorlane {

/// The main queue as a loop that the host runs or polls. Making one starts nothing.
class LinuxMainQueue : public DispatchQueue {
public:
    LinuxMainQueue();
    /// Drops what is queued.
    ~LinuxMainQueue() override;

    void post(std::function<void()> task) override;
    /// The delay runs on the steady clock of the machine. One that is not a number counts as none.
    void postAfter(TimeInterval delay, std::function<void()> task) override;
    /// Whether the caller is on the thread that last ran or polled the queue; before the first time, the one that made
    /// it.
    bool isCurrent() const override;

    /// Runs tasks until `stopRunning()` or `close()`. A stop that was asked for before ends it at once. One thread at a
    /// time.
    void run();
    /// As `run()`, for that many seconds at most.
    void runFor(TimeInterval seconds);
    /// Runs what is due without waiting and returns how many tasks ran. It ends after the first task that was posted
    /// meanwhile, so a task that posts itself again does not hold it for ever.
    std::size_t poll();
    /// Any thread.
    void stopRunning();

    /// Drops what is queued and whatever is posted from now on. Any thread that is not inside a task.
    void close();

private:
    struct Loop;
    const std::unique_ptr<Loop> loop_;
};

}  // namespace vorlane

#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "Platform/DispatchQueue.h"

namespace vorlane {

/// The main queue as a loop that the host runs or polls. Construction starts no thread and opens no descriptor.
class LinuxMainQueue : public DispatchQueue {
public:
    LinuxMainQueue();
    /// Drops queued tasks.
    ~LinuxMainQueue() override;

    void post(std::function<void()> task) override;
    /// Measures the delay by the machine's steady clock. A delay that is not a number counts as 0.
    void postAfter(TimeInterval delay, std::function<void()> task) override;
    /// Whether the calling thread is the one that last ran or polled the queue, or the one that made it if none has.
    bool isCurrent() const override;

    /// Runs tasks until `stopRunning()` or `close()`. An earlier stop that ended no run ends this one at once. One
    /// thread at a time.
    void run();
    /// Like `run()`, for at most `seconds`.
    void runFor(TimeInterval seconds);
    /// Like `runFor()`, but ends as soon as no task is due and `isDone()` is true. Returns what `isDone()` returned
    /// last. `isDone` is called again after each task, so whoever changes its answer posts one.
    bool runUntil(const std::function<bool()>& isDone, TimeInterval seconds);
    /// Runs the tasks that are due without waiting and returns how many ran. Ends after the first task that was posted
    /// during the call, so a task that posts itself again does not keep it running.
    std::size_t poll();
    /// Any thread.
    void stopRunning();

    /// Drops what is queued and what is posted from now on. Any thread, but not from a task.
    void close();

private:
    struct Loop;
    const std::unique_ptr<Loop> loop_;
};

}  // namespace vorlane

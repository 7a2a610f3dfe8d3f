#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <thread>

#include "Platform/DispatchQueue.h"

namespace vorlane {

/// The host's own main queue behind a door that a shutdown closes. Posted tasks wait here, and the host's queue
/// receives one ticket for each, which runs the next task. So a shutdown can run the tasks that the host's loop no
/// longer reaches.
class HostMainQueue : public DispatchQueue {
public:
    explicit HostMainQueue(std::shared_ptr<DispatchQueue> queue);
    ~HostMainQueue() override;

    void post(std::function<void()> task) override;
    void postAfter(TimeInterval delay, std::function<void()> task) override;
    bool isCurrent() const override;

    /// Runs the tasks posted so far and returns how many ran. Main thread.
    std::size_t poll();

    /// Drops the waiting tasks and whatever is posted from now on; delayed tasks in the host's queue do nothing. Any
    /// thread.
    void close();

private:
    struct Door;

    // Fixed at construction.
    const std::shared_ptr<DispatchQueue> queue_;
    // Shared with the tickets, which may outlive the queue.
    const std::shared_ptr<Door> door_;
    // The thread inside `poll()`, unknown to the host's queue.
    std::atomic<std::thread::id> pollingThread_;
};

}  // namespace vorlane

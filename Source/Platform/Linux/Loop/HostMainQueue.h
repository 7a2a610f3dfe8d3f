#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <thread>

#include "Platform/DispatchQueue.h"

namespace vorlane {

/// The host's own main queue, seen through a door that a shutdown closes. What is posted waits here, and the host's
/// queue gets a ticket to run the next of it, so that a shutdown can run what the host's loop does not come to any
/// more.
class HostMainQueue : public DispatchQueue {
public:
    explicit HostMainQueue(std::shared_ptr<DispatchQueue> queue);
    ~HostMainQueue() override;

    void post(std::function<void()> task) override;
    void postAfter(TimeInterval delay, std::function<void()> task) override;
    bool isCurrent() const override;

    /// Runs what has been posted so far and gives how much that was. Main thread.
    std::size_t poll();

    /// From now on the library's tasks do nothing, those that wait in the host's queue included. Any thread.
    void close();

private:
    struct Door;

    // Fixed at construction.
    const std::shared_ptr<DispatchQueue> queue_;
    // Shared with the tickets, which the host may keep for longer.
    const std::shared_ptr<Door> door_;
    // The thread inside of `poll()`, which no host's queue knows of.
    std::atomic<std::thread::id> pollingThread_;
};

}  // namespace vorlane

#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "Platform/DispatchQueue.h"

namespace vorlane {

/// The host's own main queue, seen through a door that a shutdown closes.
class HostMainQueue : public DispatchQueue {
public:
    explicit HostMainQueue(std::shared_ptr<DispatchQueue> queue);

    void post(std::function<void()> task) override;
    void postAfter(TimeInterval delay, std::function<void()> task) override;
    bool isCurrent() const override { return queue_->isCurrent(); }

    /// From now on the library's tasks do nothing, those that wait in the host's queue included. Any thread.
    void close() { *isClosed_ = true; }

private:
    std::function<void()> guarded(std::function<void()> task) const;

    // Fixed at construction.
    const std::shared_ptr<DispatchQueue> queue_;
    const std::shared_ptr<std::atomic<bool>> isClosed_ = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace vorlane

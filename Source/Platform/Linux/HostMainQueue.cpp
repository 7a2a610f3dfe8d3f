#include "Platform/Linux/HostMainQueue.h"

#include <utility>

#include "Platform/Linux/ExitGate.h"

namespace vorlane {

HostMainQueue::HostMainQueue(std::shared_ptr<DispatchQueue> queue) : queue_(std::move(queue)) {}

void HostMainQueue::post(std::function<void()> task) {
    if (*isClosed_) return;
    queue_->post(guarded(std::move(task)));
}

void HostMainQueue::postAfter(TimeInterval delay, std::function<void()> task) {
    if (*isClosed_) return;
    queue_->postAfter(delay, guarded(std::move(task)));
}

std::function<void()> HostMainQueue::guarded(std::function<void()> task) const {
    return [isClosed = isClosed_, task = std::move(task)]() mutable {
        if (!*isClosed) ExitGate::shared().run(std::move(task));
    };
}

}  // namespace vorlane

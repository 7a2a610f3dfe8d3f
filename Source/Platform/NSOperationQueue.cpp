#include "Platform/NSOperationQueue.h"

#include <deque>
#include <mutex>
#include <utility>

#include "Platform/DispatchQueue.h"

namespace vorlane {

struct NSOperationQueue::State : std::enable_shared_from_this<State> {
    explicit State(std::shared_ptr<DispatchQueue> queue) : underlyingQueue(std::move(queue)) {}

    /// Makes the underlying queue start the operation that is then the first.
    void postStart() {
        underlyingQueue->post([weakSelf = weak_from_this()] {
            const auto self = weakSelf.lock();
            const auto operation = self ? self->take() : nullptr;
            if (operation) operation();
        });
    }

    std::function<void()> take() {
        const std::lock_guard lock(mutex);
        if (isSuspended || operations.empty()) return nullptr;
        auto operation = std::move(operations.front());
        operations.pop_front();
        return operation;
    }

    // Fixed at construction.
    const std::shared_ptr<DispatchQueue> underlyingQueue;

    mutable std::mutex mutex;
    // Guarded by mutex.
    bool isSuspended = false;
    std::deque<std::function<void()>> operations;
};

NSOperationQueue::NSOperationQueue(std::shared_ptr<DispatchQueue> underlyingQueue)
    : state_(std::make_shared<State>(std::move(underlyingQueue))) {}

NSOperationQueue::~NSOperationQueue() = default;

void NSOperationQueue::addOperationWithBlock(std::function<void()> block) {
    if (!block) return;
    {
        const std::lock_guard lock(state_->mutex);
        state_->operations.push_back(std::move(block));
        if (state_->isSuspended) return;
    }
    state_->postStart();
}

void NSOperationQueue::setSuspended(bool isSuspended) {
    std::size_t waiting = 0;
    {
        const std::lock_guard lock(state_->mutex);
        if (std::exchange(state_->isSuspended, isSuspended) == isSuspended || isSuspended) return;
        waiting = state_->operations.size();
    }
    // Starts posted before the suspension may still be queued; a surplus start finds no operation.
    for (std::size_t i = 0; i < waiting; ++i) state_->postStart();
}

bool NSOperationQueue::isSuspended() const {
    const std::lock_guard lock(state_->mutex);
    return state_->isSuspended;
}

std::size_t NSOperationQueue::operationCount() const {
    const std::lock_guard lock(state_->mutex);
    return state_->operations.size();
}

}  // namespace vorlane

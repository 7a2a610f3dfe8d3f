#include "Platform/NSTimer.h"

#include <utility>

namespace vorlane {

NSTimer::NSTimer(std::function<void()> block) : block_(std::move(block)) {}

void NSTimer::invalidate() {
    // The block is destroyed after the lock is released.
    std::function<void()> block;
    std::function<void()> handler;
    {
        const std::lock_guard lock(mutex_);
        block = std::exchange(block_, nullptr);
        handler = std::exchange(invalidationHandler_, nullptr);
    }
    if (handler) handler();
}

bool NSTimer::isValid() const {
    const std::lock_guard lock(mutex_);
    return static_cast<bool>(block_);
}

void NSTimer::fire() {
    std::function<void()> block;
    {
        const std::lock_guard lock(mutex_);
        block = std::exchange(block_, nullptr);
        invalidationHandler_ = nullptr;
    }
    if (block) block();
}

void NSTimer::setInvalidationHandler(std::function<void()> handler) {
    const std::lock_guard lock(mutex_);
    if (block_) invalidationHandler_ = std::move(handler);
}

}  // namespace vorlane

#include "Platform/DispatchSemaphore.h"

namespace vorlane {

void DispatchSemaphore::signal() {
    const std::lock_guard lock(mutex_);
    ++signals_;
    changed_.notify_one();
}

bool DispatchSemaphore::wait() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return signals_ > 0 || isAbandoned_; });
    if (signals_ == 0) return false;
    --signals_;
    return true;
}

void DispatchSemaphore::abandon() {
    const std::lock_guard lock(mutex_);
    isAbandoned_ = true;
    changed_.notify_all();
}

}  // namespace vorlane

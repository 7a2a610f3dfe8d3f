#include "Platform/DispatchGroup.h"

#include <cassert>

#include "Platform/DispatchQueue.h"

namespace vorlane {

void DispatchGroup::enter() {
    const std::lock_guard lock(mutex_);
    ++count_;
}

void DispatchGroup::leave() {
    std::vector<Notice> notices;
    {
        const std::lock_guard lock(mutex_);
        assert(count_ > 0);
        if (--count_ == 0) notices.swap(notices_);
    }
    for (auto& [queue, task] : notices) queue->post(std::move(task));
}

void DispatchGroup::notify(std::shared_ptr<DispatchQueue> queue, std::function<void()> task) {
    {
        const std::lock_guard lock(mutex_);
        if (count_ > 0) {
            notices_.emplace_back(std::move(queue), std::move(task));
            return;
        }
    }
    queue->post(std::move(task));
}

}  // namespace vorlane

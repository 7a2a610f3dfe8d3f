#include "Inbox/VLInboxSyncQueue.h"

#include <utility>

#include "Platform/DispatchGroup.h"
#include "Platform/DispatchQueue.h"

namespace vorlane {

VLInboxSyncQueue::VLInboxSyncQueue(std::shared_ptr<DispatchQueue> queue) : queue_(std::move(queue)) {}

VLInboxSyncQueue::~VLInboxSyncQueue() = default;

void VLInboxSyncQueue::post(Request request) {
    queue_->post([self = shared_from_this(), request = std::move(request)]() mutable {
        self->requests_.push_back(std::move(request));
        self->startNext();
    });
}

void VLInboxSyncQueue::startNext() {
    while (!isWaiting_ && !requests_.empty()) {
        const auto request = std::move(requests_.front());
        requests_.pop_front();
        if (const auto group = request()) wait(*group);
    }
}

void VLInboxSyncQueue::wait(DispatchGroup& group) {
    isWaiting_ = true;
    const auto end = [weakSelf = weak_from_this(), turn = ++turn_] {
        if (const auto self = weakSelf.lock()) self->endTurn(turn);
    };
    group.notify(queue_, end);
    queue_->postAfter(kLongestWait, end);
}

void VLInboxSyncQueue::endTurn(std::uint64_t turn) {
    if (!isWaiting_ || turn != turn_) return;
    isWaiting_ = false;
    startNext();
}

}  // namespace vorlane

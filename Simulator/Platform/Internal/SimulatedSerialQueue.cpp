#include "Simulator/Platform/Internal/SimulatedSerialQueue.h"

#include <utility>

namespace vorlane {

SimulatedSerialQueue::SimulatedSerialQueue(std::string label, std::shared_ptr<SimulatedMainQueue> mainQueue,
                                           std::shared_ptr<ActivityCounter> activity, Delays delays)
    : SerialDispatchQueue(std::move(label)),
      mainQueue_(std::move(mainQueue)),
      activity_(std::move(activity)),
      delays_(delays) {}

void SimulatedSerialQueue::post(std::function<void()> task) { SimulatedSerialQueue::postAfter(0, std::move(task)); }

void SimulatedSerialQueue::postAfter(TimeInterval delay, std::function<void()> task) {
    if (!task) return;
    if (delay > 0 && delays_ == Delays::PhoneTime) return postInPhoneTime(delay, std::move(task));
    ++*activity_;
    auto work = delay > 0 ? nullptr : mainQueue_->beginWorkElsewhere();
    SerialDispatchQueue::postAfter(delay,
                                   [task = std::move(task), work = std::move(work), mainQueue = mainQueue_]() mutable {
                                       if (!work) work = mainQueue->beginWorkElsewhere();
                                       task();
                                       // The captures are destroyed before the work counts as ended.
                                       task = nullptr;
                                       work = nullptr;
                                   });
}

void SimulatedSerialQueue::postInPhoneTime(TimeInterval delay, std::function<void()> task) {
    mainQueue_->postAt(mainQueue_->now() + delay, SimulatedMainQueue::Kind::Phone,
                       [weakSelf = weak_from_this(), task = std::move(task)] {
                           if (const auto self = weakSelf.lock()) self->post(task);
                       });
}

}  // namespace vorlane

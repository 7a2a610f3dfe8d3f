#include "Simulator/Platform/Internal/SimulatedQueues.h"

#include <algorithm>
#include <utility>

#include "Platform/Internal/SerialDispatchQueue.h"

namespace vorlane {

namespace {

// How long to wait for a serial queue before checking the main queue, which the serial queue may be waiting for.
constexpr std::chrono::milliseconds kTurn{1};

}  // namespace

SimulatedQueues::SimulatedQueues(const Clock& clock, SimulatedSerialQueue::Delays delays)
    : delays_(delays), mainQueue_(std::make_shared<SimulatedMainQueue>(clock, activity_)) {}

std::shared_ptr<SerialDispatchQueue> SimulatedQueues::makeSerialQueue(const std::string& label) {
    auto queue = std::make_shared<SimulatedSerialQueue>(label, mainQueue_, activity_, delays_);
    const std::lock_guard lock(mutex_);
    if (isStopped_) {
        queue->stop(std::chrono::steady_clock::now());
    } else {
        std::erase_if(serialQueues_, [](const auto& known) { return known.expired(); });
        serialQueues_.push_back(queue);
    }
    return queue;
}

std::vector<std::shared_ptr<SerialDispatchQueue>> SimulatedQueues::liveQueues() {
    const std::lock_guard lock(mutex_);
    std::vector<std::shared_ptr<SerialDispatchQueue>> live;
    for (const auto& queue : serialQueues_) {
        if (auto found = queue.lock()) live.push_back(std::move(found));
    }
    return live;
}

bool SimulatedQueues::settle(Deadline deadline, const std::function<bool()>& isAtRest) {
    while (!settleOnce(deadline, isAtRest)) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
    }
    return true;
}

/// Returns true if a whole pass over every queue found no work.
bool SimulatedQueues::settleOnce(Deadline deadline, const std::function<bool()>& isAtRest) {
    const auto isEnough = [&] { return !mainQueue_->hasWorkElsewhere() && isAtRest(); };
    const auto before = activity_->load();
    mainQueue_->runDueTasks(deadline);
    // A task posted to the main queue ends the wait too: the work elsewhere may itself wait for that task.
    mainQueue_->wait({.deadline = deadline, .clockMoves = clockMoves(), .isEnough = isEnough});
    if (mainQueue_->hasDueTask() || !isEnough() || !waitForSerialQueues(deadline)) return false;
    return isEnough() && !mainQueue_->hasDueTask() && activity_->load() == before;
}

/// Only a delayed task that has just become due can still run here. Returns false if the main queue has work first.
bool SimulatedQueues::waitForSerialQueues(Deadline deadline) {
    for (const auto& queue : liveQueues()) {
        while (!queue->waitUntilIdle(std::min(deadline, std::chrono::steady_clock::now() + kTurn))) {
            if (std::chrono::steady_clock::now() >= deadline || mainQueue_->hasDueTask()) return false;
        }
    }
    return true;
}

void SimulatedQueues::stop(Deadline deadline) {
    {
        const std::lock_guard lock(mutex_);
        isStopped_ = true;
    }
    for (const auto& queue : liveQueues()) queue->stop(deadline);
    mainQueue_->stop();
}

}  // namespace vorlane

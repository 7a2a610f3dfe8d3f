#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Simulator/Platform/Internal/SimulatedMainQueue.h"
#include "Simulator/Platform/Internal/SimulatedSerialQueue.h"

namespace vorlane {

class SerialDispatchQueue;

/// All queues of a simulated phone: makes serial queues, waits until every queue is idle, and stops them. Any thread,
/// except where an operation says otherwise.
class SimulatedQueues {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    /// The calling thread becomes the main thread. `clock` must outlive the queues. `delays` applies to the serial
    /// queues: with `phoneTime` the clock stands still while a thread waits.
    SimulatedQueues(const Clock& clock, SimulatedSerialQueue::Delays delays);

    const std::shared_ptr<SimulatedMainQueue>& mainQueue() const { return mainQueue_; }
    std::shared_ptr<SerialDispatchQueue> makeSerialQueue(const std::string& label);

    /// Runs the main queue and waits for every serial queue until no task is due and `isAtRest` returns true. Returns
    /// false if that takes longer than the deadline. `isAtRest` must not lock the main queue. Main thread.
    bool settle(Deadline deadline, const std::function<bool()>& isAtRest);

    /// Whether the clock advances while a thread waits.
    bool clockMoves() const { return delays_ == SimulatedSerialQueue::Delays::RealTime; }

    /// Runs what is queued on the serial queues until the deadline, then drops what is left. Serial queues made later
    /// are stopped from the start.
    void stop(Deadline deadline);

private:
    std::vector<std::shared_ptr<SerialDispatchQueue>> liveQueues();
    bool settleOnce(Deadline deadline, const std::function<bool()>& isAtRest);
    bool waitForSerialQueues(Deadline deadline);

    // Fixed at construction.
    const SimulatedSerialQueue::Delays delays_;
    const std::shared_ptr<ActivityCounter> activity_ = std::make_shared<ActivityCounter>(0);
    const std::shared_ptr<SimulatedMainQueue> mainQueue_;

    std::mutex mutex_;
    // Guarded by mutex_.
    std::vector<std::weak_ptr<SerialDispatchQueue>> serialQueues_;
    bool isStopped_ = false;
};

}  // namespace vorlane

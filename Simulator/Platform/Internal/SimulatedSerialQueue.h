#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Platform/Internal/SerialDispatchQueue.h"
#include "Simulator/Platform/Internal/SimulatedMainQueue.h"

namespace vorlane {

/// A serial queue of the simulated phone. A task counts as work elsewhere for the main queue from the moment it is
/// posted until it has run and its captures are destroyed; a delayed task only while it runs. Any thread.
class SimulatedSerialQueue : public SerialDispatchQueue, public std::enable_shared_from_this<SimulatedSerialQueue> {
public:
    /// The clock that delays run on: the machine's steady clock, or the phone's clock.
    enum class Delays { RealTime, PhoneTime };

    SimulatedSerialQueue(std::string label, std::shared_ptr<SimulatedMainQueue> mainQueue,
                         std::shared_ptr<ActivityCounter> activity, Delays delays = Delays::RealTime);

    void post(std::function<void()> task) override;
    void postAfter(TimeInterval delay, std::function<void()> task) override;

private:
    void postInPhoneTime(TimeInterval delay, std::function<void()> task);

    // Fixed at construction.
    const std::shared_ptr<SimulatedMainQueue> mainQueue_;
    const std::shared_ptr<ActivityCounter> activity_;
    const Delays delays_;
};

}  // namespace vorlane

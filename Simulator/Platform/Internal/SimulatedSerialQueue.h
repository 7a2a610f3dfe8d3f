#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Platform/Internal/SerialDispatchQueue.h"
#include "Simulator/Platform/SimulatedMainQueue.h"

namespace vorlane {

/// A serial queue of the simulated phone. What is posted to it is activity of the phone, and work elsewhere for its
/// main queue until it has run and what it held is gone. A delayed task is such work only while it runs. Any thread.
class SimulatedSerialQueue : public SerialDispatchQueue, public std::enable_shared_from_this<SimulatedSerialQueue> {
public:
    /// What keeps the time of a delayed task: the machine's clock, or the phone's, whose main queue moves it on.
    enum class Delays { realTime, phoneTime };

    SimulatedSerialQueue(std::string label, std::shared_ptr<SimulatedMainQueue> mainQueue,
                         std::shared_ptr<ActivityCounter> activity, Delays delays = Delays::realTime);

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

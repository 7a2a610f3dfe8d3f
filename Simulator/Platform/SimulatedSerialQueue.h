#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Platform/SerialDispatchQueue.h"
#include "Simulator/Platform/SimulatedMainQueue.h"

namespace vorlane {

/// A serial queue of the simulated phone. What is posted to it is activity of the phone, and work elsewhere for its
/// main queue until it has run and what it held is gone. A delayed task is such work only while it runs. Any thread.
class SimulatedSerialQueue : public SerialDispatchQueue {
public:
    SimulatedSerialQueue(std::string label, std::shared_ptr<SimulatedMainQueue> mainQueue,
                         std::shared_ptr<ActivityCounter> activity);

    void post(std::function<void()> task) override;
    void postAfter(TimeInterval delay, std::function<void()> task) override;

private:
    // Fixed at construction.
    const std::shared_ptr<SimulatedMainQueue> mainQueue_;
    const std::shared_ptr<ActivityCounter> activity_;
};

}  // namespace vorlane

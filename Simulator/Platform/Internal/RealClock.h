#pragma once

#include <chrono>

#include "Platform/Clock.h"

namespace vorlane {

/// Starts at the system's time and advances with the steady clock, so that setting the system's clock moves no timer.
/// Any thread.
class RealClock : public Clock {
public:
    double now() const override {
        return start_ + std::chrono::duration<double>(std::chrono::steady_clock::now() - steadyStart_).count();
    }

private:
    // Fixed at construction.
    const double start_ = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    const std::chrono::steady_clock::time_point steadyStart_ = std::chrono::steady_clock::now();
};

}  // namespace vorlane

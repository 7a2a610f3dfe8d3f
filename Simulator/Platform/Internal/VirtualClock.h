#pragma once

#include <atomic>

#include "Platform/Clock.h"

namespace vorlane {

/// A clock that moves only when it is set. Any thread.
class VirtualClock : public Clock {
public:
    explicit VirtualClock(double start) : now_(start) {}

    double now() const override { return now_; }
    void setNow(double now) { now_ = now; }

private:
    std::atomic<double> now_;
};

}  // namespace vorlane

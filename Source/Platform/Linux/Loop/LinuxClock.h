#pragma once

#include "Platform/Clock.h"

namespace vorlane {

/// The system clock.
class LinuxClock : public Clock {
public:
    double now() const override;
};

}  // namespace vorlane

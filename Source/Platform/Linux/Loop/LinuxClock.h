#pragma once

#include "Platform/Clock.h"

namespace vorlane {

/// The system's clock.
class LinuxClock : public Clock {
public:
    double now() const override;
};

}  // namespace vorlane

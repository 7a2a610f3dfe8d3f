#include "Platform/Linux/Loop/LinuxClock.h"

#include <chrono>

namespace vorlane {

double LinuxClock::now() const {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

}  // namespace vorlane

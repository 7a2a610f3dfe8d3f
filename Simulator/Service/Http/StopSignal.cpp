#include "Simulator/Service/Http/StopSignal.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>

#include "Simulator/Service/Http/ServiceError.h"

namespace vorlane::service {

StopSignal::StopSignal() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (descriptor_ < 0) throw ServiceError("cannot make an event descriptor");
}

StopSignal::~StopSignal() { close(descriptor_); }

void StopSignal::raise() { eventfd_write(descriptor_, 1); }

bool StopSignal::isRaisedWithin(double seconds) const {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
    while (true) {
        const auto left = std::chrono::duration<double, std::milli>(deadline - Clock::now()).count();
        pollfd event{descriptor_, POLLIN, 0};
        const int ready = poll(&event, 1, left > 0 ? static_cast<int>(std::ceil(left)) : 0);
        if (ready > 0) return true;
        if (ready == 0 || errno != EINTR) return false;
    }
}

}  // namespace vorlane::service

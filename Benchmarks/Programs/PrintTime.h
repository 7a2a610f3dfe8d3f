#pragma once

#include <cstdio>
#include <ctime>

namespace vorlane::benchmarks {

/// Prints the seconds of the monotonic clock, which all processes share.
inline void printTime() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    std::printf("%lld.%09ld\n", static_cast<long long>(time.tv_sec), time.tv_nsec);
}

}  // namespace vorlane::benchmarks

#pragma once

#include <cstdint>

namespace vorlane {

/// Numbers the requests of the process: 1, 2, …, 9999, and again from 1. Any thread.
class VLRequestCounter {
public:
    static std::uint32_t incrementAndGetCounter();
};

}  // namespace vorlane

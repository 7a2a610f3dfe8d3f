#pragma once

#include <cstdint>

namespace vorlane {

/// Numbers the requests of the process from 1 to 9999, then again from 1. Any thread.
class VLRequestCounter {
public:
    static std::uint32_t incrementAndGetCounter();
};

}  // namespace vorlane

#pragma once

#include <atomic>
#include <cstddef>

namespace vorlane {

/// The number of requests in flight. Any thread.
class RequestCount {
public:
    void begin() { ++count_; }
    /// Matches one `begin()`.
    void end() { --count_; }
    bool isZero() const { return count_ == 0; }

private:
    std::atomic<std::size_t> count_ = 0;
};

}  // namespace vorlane

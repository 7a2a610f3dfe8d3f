#pragma once

#include <cstddef>
#include <string>

namespace vorlane {

/// Stands in for the name server while it exists: looking up a name below "held.test" blocks until `release()`, and
/// then finds 127.0.0.1. A name below "missing.test" is not found. Any other look-up is the system's. One at a time.
class HeldNames {
public:
    HeldNames();
    /// Releases the look-ups and waits until all of them have returned.
    ~HeldNames();
    HeldNames(const HeldNames&) = delete;
    HeldNames& operator=(const HeldNames&) = delete;

    static void release();
    /// Waits until that many look-ups of held names were begun.
    static void waitForLookUps(std::size_t count);
    /// How many look-ups of held names were begun.
    static std::size_t lookUpCount();
};

}  // namespace vorlane

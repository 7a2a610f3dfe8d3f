#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "Public/VLExport.h"

namespace vorlane {

/// Lets a thread wait until another one has done something. Made by `Platform::makeSemaphore()`, so that nobody waits
/// past a shutdown. Any thread.
class VORLANE_EXPORT DispatchSemaphore {
public:
    /// Lets one wait through, now or later.
    void signal();

    /// Blocks until it is let through; false when the wait was abandoned. Not to be called on the main queue.
    bool wait();

    /// Ends every wait, and those to come: the platform stops.
    void abandon();

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    // Guarded by mutex_.
    std::uint64_t signals_ = 0;
    bool isAbandoned_ = false;
};

}  // namespace vorlane

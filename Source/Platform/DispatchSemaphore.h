#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "Public/VLExport.h"

namespace vorlane {

/// Lets a thread wait for a signal of another one. Made by `Platform::makeSemaphore()`, so that no wait outlasts a
/// shutdown. Any thread.
class VORLANE_EXPORT DispatchSemaphore {
public:
    /// Ends one current or future wait.
    void signal();

    /// Blocks until a signal; returns false if the semaphore was abandoned instead. Not to be called on the main queue.
    bool wait();

    /// Ends every current and future wait, because the platform stops.
    void abandon();

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    // Guarded by mutex_.
    std::uint64_t signals_ = 0;
    bool isAbandoned_ = false;
};

}  // namespace vorlane

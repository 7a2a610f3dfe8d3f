#pragma once

#include <functional>
#include <mutex>

#include "Public/VLExport.h"

namespace vorlane {

/// A block that runs once at a later time, unless the timer is invalidated first. Made by `Platform`, which keeps it
/// until then. Any thread.
class VORLANE_EXPORT NSTimer {
public:
    explicit NSTimer(std::function<void()> block);

    /// Ends the timer without running its block.
    void invalidate();
    /// Whether the timer has neither fired nor been invalidated.
    bool isValid() const;

    /// Runs the block now and ends the timer. Has no effect on a timer that is not valid.
    void fire();
    /// For the platform: `handler` runs when the timer is invalidated.
    void setInvalidationHandler(std::function<void()> handler);

private:
    mutable std::mutex mutex_;
    // Guarded by mutex_; both empty once the timer has ended.
    std::function<void()> block_;
    std::function<void()> invalidationHandler_;
};

}  // namespace vorlane

#pragma once

#include <functional>
#include <mutex>

#include "Public/VLExport.h"

namespace vorlane {

/// A piece of work that runs once, at a later time, unless it is called off before. Made by `Platform`, which keeps it
/// until then; nobody else needs to. Any thread.
class VORLANE_EXPORT NSTimer {
public:
    explicit NSTimer(std::function<void()> block);

    /// Calls the work off; afterwards nothing happens any more.
    void invalidate();
    /// Neither has it fired nor been called off.
    bool isValid() const;

    /// Runs the work now and ends the timer; nothing for one that is not valid.
    void fire();
    /// For the platform: what to do when the timer is called off, to forget it at once.
    void setInvalidationHandler(std::function<void()> handler);

private:
    mutable std::mutex mutex_;
    // Guarded by mutex_; both empty once the timer has ended.
    std::function<void()> block_;
    std::function<void()> invalidationHandler_;
};

}  // namespace vorlane

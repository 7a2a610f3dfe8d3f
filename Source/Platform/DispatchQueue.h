#pragma once

#include <functional>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// Runs tasks one after another, in the order of posting. Any thread may post; a task must not throw.
class VORLANE_EXPORT DispatchQueue {
public:
    virtual ~DispatchQueue();

    /// Runs `task` later, never inside this call.
    virtual void post(std::function<void()> task) = 0;

    /// Runs `task` once `delay` seconds have passed on the platform's clock.
    virtual void postAfter(TimeInterval delay, std::function<void()> task) = 0;

    /// Whether the calling thread is running this queue. A queue that cannot tell says yes.
    virtual bool isCurrent() const { return true; }
};

}  // namespace vorlane

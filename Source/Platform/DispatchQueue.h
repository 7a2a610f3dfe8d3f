#pragma once

#include <functional>

#include "Public/VLExport.h"
#include "Public/VLTypes.h"

namespace vorlane {

/// Runs tasks one after another, in the order in which they were posted. Any thread may post. A task must not throw.
class VORLANE_EXPORT DispatchQueue {
public:
    virtual ~DispatchQueue();

    /// Runs `task` after this call has returned.
    virtual void post(std::function<void()> task) = 0;

    /// Runs `task` after `delay` seconds of the platform's clock.
    virtual void postAfter(TimeInterval delay, std::function<void()> task) = 0;

    /// Whether the calling thread runs this queue. A queue that does not know returns true.
    virtual bool isCurrent() const { return true; }
};

}  // namespace vorlane

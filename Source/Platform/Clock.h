#pragma once

#include "Public/VLExport.h"

namespace vorlane {

/// Tells the time. Any thread.
class VORLANE_EXPORT Clock {
public:
    virtual ~Clock();

    /// Seconds since 1970. May jump, also backwards.
    virtual double now() const = 0;
};

}  // namespace vorlane

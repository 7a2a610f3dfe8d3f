#pragma once

#include "Public/VLExport.h"

namespace vorlane {

/// The time of day. Any thread.
class VORLANE_EXPORT Clock {
public:
    virtual ~Clock();

    /// Returns seconds since 1970. May jump in either direction.
    virtual double now() const = 0;
};

}  // namespace vorlane

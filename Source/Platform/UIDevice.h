#pragma once

#include <string>
#include <vector>

#include "Platform/NSTimeZone.h"
#include "Public/VLExport.h"

namespace vorlane {

/// The device and its user's preferences. Any thread.
class VORLANE_EXPORT UIDevice {
public:
    virtual ~UIDevice();

    /// The name of the operating system.
    virtual std::string systemName() const = 0;
    /// The version of the operating system.
    virtual std::string systemVersion() const = 0;
    /// The hardware model: the `machine` field of `uname()`.
    virtual std::string machine() const = 0;
    /// Language tags (such as en-AU), most preferred first; never empty.
    virtual std::vector<std::string> preferredLanguages() const = 0;
    virtual NSTimeZone localTimeZone() const = 0;
};

}  // namespace vorlane

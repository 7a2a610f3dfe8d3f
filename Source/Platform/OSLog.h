#pragma once

#include <cstdint>
#include <string>

#include "Public/VLExport.h"

namespace vorlane {

/// The types of line in the system's log.
enum class OSLogType : std::uint8_t { DefaultType = 0, Info = 1, Debug = 2, Error = 16 };

/// A handle on the system's log for one subsystem and category. Failures are silent.
class VORLANE_EXPORT OSLog {
public:
    virtual ~OSLog();

    virtual void log(OSLogType type, const std::string& text) = 0;
};

}  // namespace vorlane

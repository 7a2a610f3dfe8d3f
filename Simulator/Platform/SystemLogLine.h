#pragma once

#include <cstdint>
#include <string>

namespace vorlane {

/// One line of the simulated phone's system log.
struct SystemLogLine {
    std::string subsystem;
    std::string category;
    /// An `OSLogType`.
    std::uint8_t type = 0;
    std::string text;
};

}  // namespace vorlane

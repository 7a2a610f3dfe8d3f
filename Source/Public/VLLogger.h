#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLTypes.h"

namespace vorlane {

/// The severity of a line. As a threshold: the least severe level that passes.
enum class VLLogLevel : std::uint64_t { Off = 0, Error = 1, Warn = 2, Info = 3, Debug = 4 };

inline constexpr const char* VL_LOG_STRING_OFF = "OFF";
inline constexpr const char* VL_LOG_STRING_ERROR = "ERROR";
inline constexpr const char* VL_LOG_STRING_WARN = "WARN";
inline constexpr const char* VL_LOG_STRING_INFO = "INFO";
inline constexpr const char* VL_LOG_STRING_DEBUG = "DEBUG";

/// A sink of log lines. The log calls its sinks on its own serial queue, never on the caller's thread, so a sink needs
/// no lock.
class VORLANE_EXPORT VLLogger {
public:
    virtual ~VLLogger();

    /// `logMessage:payload:level:` writes one line. `payload` is further detail, or `nullopt`; include `VLValue.h` to
    /// read it.
    virtual void logMessage(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) = 0;
};

}  // namespace vorlane

#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Public/VLExport.h"
#include "Public/VLLogger.h"
#include "Public/VLTypes.h"

namespace vorlane {

/// The one log of the library. It filters lines by level and passes each to the sinks on the serial queue
/// "vorlane.sdk.logger", whose thread starts with the first line that passes. Any thread.
class VORLANE_EXPORT VLLog {
public:
    using Loggers = std::vector<std::shared_ptr<VLLogger>>;

    static VLLog& sharedInstance();

    VLLog();
    ~VLLog();

    /// The threshold. A line of a higher level is dropped. Initially `Info`; start-up sets it from `VLSDKOptions`.
    VLLogLevel logLevel() const { return logLevel_.load(std::memory_order_relaxed); }
    void setLogLevel(VLLogLevel level) { logLevel_.store(level, std::memory_order_relaxed); }

    /// Whether lines of this level pass the threshold.
    bool logs(VLLogLevel level) const { return level <= logLevel(); }

    /// Adds a sink; null is ignored. The sink may still receive lines that were logged before. Exceptions of a sink are
    /// ignored.
    void addLogger(std::shared_ptr<VLLogger> logger);
    /// Removes a sink; an unknown one is ignored. Lines that are being written may still reach it.
    void removeLogger(const std::shared_ptr<VLLogger>& logger);
    /// The sinks, in the order of calls. Initially the sink of the system log alone, or that of the console on a
    /// platform below 10.0.
    Loggers loggers() const;

    /// `logMessage:payload:level:` queues one line for the sinks, unless its level is above the threshold.
    void logMessage(std::string message, std::optional<Value> payload, VLLogLevel level);

    /// `logLevelToString:` returns "ERROR", "WARN", "INFO" or "DEBUG", and "OFF" for any other value.
    static const char* logLevelToString(VLLogLevel level);
    /// `stringToLogLevel:` compares exactly. It returns `Debug` for every unknown string, including "OFF".
    static VLLogLevel stringToLogLevel(const std::string& string);

private:
    class Sinks;
    class Queue;

    void platformInstalled(bool isFirst);

    std::atomic<VLLogLevel> logLevel_;
    // Fixed at construction. Waiting lines share the sinks, so they are written even if the log is destroyed first.
    const std::shared_ptr<Sinks> sinks_;
    const std::unique_ptr<Queue> queue_;
};

/// Logs one line to the shared log. Any thread.
VORLANE_EXPORT void logMessage(VLLogLevel level, std::string message);
/// Logs one line with further detail.
VORLANE_EXPORT void logMessage(VLLogLevel level, std::string message, std::optional<Value> payload);

}  // namespace vorlane

#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Public/VLExport.h"
#include "Public/VLLogger.h"
#include "Public/VLValue.h"

namespace vorlane {

class DispatchQueue;

/// The one log that all of the library writes to: filters by level, then hands each line to the sinks on the serial
/// queue "vorlane.sdk.logger", whose thread starts with the first line that passes. Any thread.
class VORLANE_EXPORT VLLog {
public:
    using Loggers = std::vector<std::shared_ptr<VLLogger>>;

    static VLLog& sharedInstance();

    VLLog();
    ~VLLog();

    /// The threshold; a line of a higher level is dropped. `Info` until it is set; start-up sets it from
    /// `VLSDKOptions`.
    VLLogLevel logLevel() const { return logLevel_.load(std::memory_order_relaxed); }
    void setLogLevel(VLLogLevel level) { logLevel_.store(level, std::memory_order_relaxed); }

    /// Whether lines of that level pass the threshold.
    bool logs(VLLogLevel level) const { return level <= logLevel(); }

    /// Adds a sink, nothing for null. A line that was logged before may still reach it; what a sink throws is dropped.
    void addLogger(std::shared_ptr<VLLogger> logger);
    void removeLogger(const std::shared_ptr<VLLogger>& logger);
    /// The sinks, in order. At first the system log's alone (the console's on a platform below 10.0).
    Loggers loggers() const;

    /// `logMessage:payload:level:` queues one line for the sinks, unless its level is above the threshold.
    void logMessage(std::string message, std::optional<Value> payload, VLLogLevel level);

    /// `logLevelToString:` gives "ERROR", "WARN", "INFO" or "DEBUG", and "OFF" for any other value.
    static const char* logLevelToString(VLLogLevel level);
    /// `stringToLogLevel:` compares exactly; every unknown text, "OFF" included, gives `Debug`.
    static VLLogLevel stringToLogLevel(const std::string& text);

private:
    struct Sinks;

    std::atomic<VLLogLevel> logLevel_ = VLLogLevel::Info;
    // Fixed at construction. Lines that wait share the sinks, so that they are still written when the log goes.
    const std::shared_ptr<Sinks> sinks_;
    const std::shared_ptr<DispatchQueue> queue_;
};

/// Logs to the shared log. Any thread.
VORLANE_EXPORT void logMessage(VLLogLevel level, std::string message, std::optional<Value> payload = std::nullopt);

}  // namespace vorlane

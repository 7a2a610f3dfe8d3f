#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Public/VLLogger.h"
#include "Public/VLValue.h"

namespace vorlane {

/// A log sink that keeps every line. Any thread.
class RecordingLogger : public VLLogger {
public:
    struct Line {
        VLLogLevel level;
        std::string message;
        std::optional<Value> payload;
    };

    void logMessage(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) override;

    std::vector<Line> lines() const;
    /// The number of lines with exactly this message and level.
    int count(const std::string& message, VLLogLevel level) const;
    /// The lines whose message contains `part`.
    std::vector<Line> linesContaining(const std::string& part) const;
    void clear();

private:
    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::vector<Line> lines_;
};

}  // namespace vorlane

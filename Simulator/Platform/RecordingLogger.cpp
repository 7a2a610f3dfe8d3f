#include "Simulator/Platform/RecordingLogger.h"

#include <algorithm>

namespace vorlane {

void RecordingLogger::logMessage(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) {
    const std::lock_guard lock(mutex_);
    lines_.push_back({level, message, payload});
}

std::vector<RecordingLogger::Line> RecordingLogger::lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
}

int RecordingLogger::count(const std::string& message, VLLogLevel level) const {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(std::count_if(lines_.begin(), lines_.end(), [&](const Line& line) {
        return line.message == message && line.level == level;
    }));
}

std::vector<RecordingLogger::Line> RecordingLogger::linesContaining(const std::string& part) const {
    auto found = lines();
    std::erase_if(found, [&part](const Line& line) { return line.message.find(part) == std::string::npos; });
    return found;
}

void RecordingLogger::clear() {
    const std::lock_guard lock(mutex_);
    lines_.clear();
}

}  // namespace vorlane

#include "Public/VLFileLogger.h"

#include <fmt/format.h>

#include <system_error>
#include <utility>

#include "Core/Base/VLLogLine.h"
#include "Platform/Internal/RotatingFile.h"
#include "Platform/Platform.h"

namespace vorlane {

VLFileLogger::VLFileLogger(std::string path) : VLFileLogger(std::move(path), Limits()) {}

VLFileLogger::VLFileLogger(std::string path, Limits limits)
    : file_(std::make_unique<RotatingFile>(std::move(path), limits.longestSize, limits.keptFiles)) {}

VLFileLogger::~VLFileLogger() = default;

void VLFileLogger::logMessage(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) {
    const int error = file_->append(logLine(message, payload, level) + "\n");
    const bool failedBefore = std::exchange(hasFailed_, error != 0);
    if (error == 0 || failedBefore) return;
    Platform::current().NSLog(
        fmt::format("Cannot write log file {}: {}", file_->path(), std::generic_category().message(error)));
}

}  // namespace vorlane

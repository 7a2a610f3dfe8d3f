#include "Core/Base/VLNSLogger.h"

#include <fmt/format.h>

#include "Categories/NSDictionary+VLJSON.h"
#include "Platform/Platform.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

void writeLine(const char* levelName, const std::string& line) {
    Platform::current().NSLog(fmt::format("vorlane.sdk [{}]: {}", levelName, line));
}

}  // namespace

void VLNSLogger::logMessage(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) {
    if (level < VLLogLevel::Error || level > VLLogLevel::Debug) return;
    const auto text = payload ? message + "\n" + vl_description(*payload) : message;
    writeLine(VLLog::logLevelToString(level), text);
    // Intended: a warning is written a second time, as an error.
    if (level == VLLogLevel::Warn) writeLine(VL_LOG_STRING_ERROR, text);
}

}  // namespace vorlane

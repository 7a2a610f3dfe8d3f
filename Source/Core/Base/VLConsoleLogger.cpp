#include "Public/VLConsoleLogger.h"

#include "Core/Base/VLLogLine.h"
#include "Platform/Platform.h"
#include "Public/VLValue.h"

namespace vorlane {

void VLConsoleLogger::logMessage(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) {
    Platform::current().NSLog(logLine(message, payload, level));
}

}  // namespace vorlane

#include "Core/Base/VLOSLogger.h"

#include "Categories/NSDictionary+VLJSON.h"
#include "Platform/NSException.h"
#include "Platform/OSLog.h"
#include "Platform/Platform.h"

namespace vorlane {

namespace {

constexpr double kFirstVersionWithOSLog = 10.0;

std::shared_ptr<OSLog> createLog() {
    if (Platform::current().systemVersion() < kFirstVersionWithOSLog) {
        throw NSException("VLOSLogger Usage Exception",
                          "Attempting to use the VLOSLogger class on an iOS version that does not support os_log()");
    }
    return Platform::current().makeOSLog("vorlane.sdk", "VL");
}

std::optional<OSLogType> typeOf(VLLogLevel level) {
    switch (level) {
        case VLLogLevel::Error:
            return OSLogType::Error;
        case VLLogLevel::Warn:
            return OSLogType::DefaultType;
        case VLLogLevel::Info:
            return OSLogType::Info;
        case VLLogLevel::Debug:
            return OSLogType::Debug;
        default:
            return std::nullopt;
    }
}

}  // namespace

VLOSLogger::VLOSLogger() : log_(createLog()) {}

void VLOSLogger::logMessage(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) {
    const auto type = typeOf(level);
    if (type) log_->log(*type, payload ? message + "\n" + vl_description(*payload) : message);
}

}  // namespace vorlane

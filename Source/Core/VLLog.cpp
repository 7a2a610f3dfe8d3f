#include "Public/VLLog.h"

#include <algorithm>
#include <utility>

#include "Core/VLNSLogger.h"
#include "Core/VLOSLogger.h"
#include "Platform/DispatchQueue.h"
#include "Platform/Platform.h"
#include "Platform/ProcessWide.h"

namespace vorlane {

namespace {

constinit ProcessWide<VLLog> sharedLog;

std::shared_ptr<VLLogger> defaultLogger() {
    if (Platform::current().systemVersion() >= 10.0) return std::make_shared<VLOSLogger>();
    return std::make_shared<VLNSLogger>();
}

void callLogger(VLLogger& logger, const std::string& message, const std::optional<Value>& payload, VLLogLevel level) {
    try {
        logger.logMessage(message, payload, level);
    } catch (...) {
        // Logging never fails visibly, whatever a sink of the host does.
    }
}

}  // namespace

VLLog& VLLog::sharedInstance() { return sharedLog.get(); }

VLLog::VLLog()
    : queue_(Platform::current().makeSerialQueue("vorlane.sdk.logger")),
      loggers_(std::make_shared<const Loggers>(Loggers{defaultLogger()})) {}

VLLog::~VLLog() = default;

void VLLog::addLogger(std::shared_ptr<VLLogger> logger) {
    if (!logger) return;
    const std::lock_guard lock(mutex_);
    auto loggers = *loggers_;
    loggers.push_back(std::move(logger));
    loggers_ = std::make_shared<const Loggers>(std::move(loggers));
}

void VLLog::removeLogger(const std::shared_ptr<VLLogger>& logger) {
    const std::lock_guard lock(mutex_);
    auto loggers = *loggers_;
    loggers.erase(std::remove(loggers.begin(), loggers.end(), logger), loggers.end());
    loggers_ = std::make_shared<const Loggers>(std::move(loggers));
}

VLLog::Loggers VLLog::loggers() const { return *loggersSnapshot(); }

std::shared_ptr<const VLLog::Loggers> VLLog::loggersSnapshot() const {
    const std::lock_guard lock(mutex_);
    return loggers_;
}

void VLLog::logMessage(std::string message, std::optional<Value> payload, VLLogLevel level) {
    if (!logs(level)) return;
    queue_->post([this, message = std::move(message), payload = std::move(payload), level] {
        // Held while it is walked: a sink may change the list.
        const auto loggers = loggersSnapshot();
        for (const auto& logger : *loggers) callLogger(*logger, message, payload, level);
    });
}

const char* VLLog::logLevelToString(VLLogLevel level) {
    switch (level) {
        case VLLogLevel::Error:
            return VL_LOG_STRING_ERROR;
        case VLLogLevel::Warn:
            return VL_LOG_STRING_WARN;
        case VLLogLevel::Info:
            return VL_LOG_STRING_INFO;
        case VLLogLevel::Debug:
            return VL_LOG_STRING_DEBUG;
        default:
            return VL_LOG_STRING_OFF;
    }
}

VLLogLevel VLLog::stringToLogLevel(const std::string& text) {
    if (text == VL_LOG_STRING_INFO) return VLLogLevel::Info;
    if (text == VL_LOG_STRING_WARN) return VLLogLevel::Warn;
    if (text == VL_LOG_STRING_ERROR) return VLLogLevel::Error;
    // "OFF" is no exception: the two conversions are not each other's inverse, and meant so.
    return VLLogLevel::Debug;
}

void logMessage(VLLogLevel level, std::string message, std::optional<Value> payload) {
    auto& log = VLLog::sharedInstance();
    if (!log.logs(level)) return;
    log.logMessage(std::move(message), std::move(payload), level);
}

}  // namespace vorlane

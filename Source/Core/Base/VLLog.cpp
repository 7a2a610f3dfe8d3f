#include "Public/VLLog.h"

#include <mutex>
#include <utility>

#include "Core/Base/VLNSLogger.h"
#include "Core/Base/VLOSLogger.h"
#include "Platform/DispatchQueue.h"
#include "Platform/Internal/ProcessWide.h"
#include "Platform/Platform.h"

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

/// The list is replaced whole, so that no sink is called, or let go of, with the lock held.
struct VLLog::Sinks {
    explicit Sinks(Loggers first) : loggers(std::make_shared<const Loggers>(std::move(first))) {}

    std::shared_ptr<const Loggers> snapshot() const {
        const std::lock_guard lock(mutex);
        return loggers;
    }

    template <class Change>
    void change(Change change) {
        std::shared_ptr<const Loggers> before;
        const std::lock_guard lock(mutex);
        Loggers changed = *loggers;
        change(changed);
        before = std::exchange(loggers, std::make_shared<const Loggers>(std::move(changed)));
    }

    mutable std::mutex mutex;
    // Guarded by mutex.
    std::shared_ptr<const Loggers> loggers;
};

VLLog::VLLog()
    : sinks_(std::make_shared<Sinks>(Loggers{defaultLogger()})),
      queue_(Platform::current().makeSerialQueue("vorlane.sdk.logger")) {}

VLLog::~VLLog() = default;

void VLLog::addLogger(std::shared_ptr<VLLogger> logger) {
    if (!logger) return;
    sinks_->change([&logger](Loggers& loggers) { loggers.push_back(std::move(logger)); });
}

void VLLog::removeLogger(const std::shared_ptr<VLLogger>& logger) {
    sinks_->change([&logger](Loggers& loggers) { std::erase(loggers, logger); });
}

VLLog::Loggers VLLog::loggers() const { return *sinks_->snapshot(); }

void VLLog::logMessage(std::string message, std::optional<Value> payload, VLLogLevel level) {
    if (!logs(level)) return;
    queue_->post([sinks = sinks_, message = std::move(message), payload = std::move(payload), level] {
        // Held while it is walked: a sink may change the list.
        const auto loggers = sinks->snapshot();
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

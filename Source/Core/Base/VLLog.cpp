#include "Public/VLLog.h"

#include <mutex>
#include <utility>

#include "Core/Base/VLNSLogger.h"
#include "Core/Base/VLOSLogger.h"
#include "Platform/DispatchQueue.h"
#include "Platform/Internal/InstallObservers.h"
#include "Platform/Platform.h"
#include "Public/VLValue.h"

namespace vorlane {

namespace {

constexpr VLLogLevel kInitialLogLevel = VLLogLevel::Info;

std::shared_ptr<VLLogger> makeSystemLogger() {
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

/// The list of sinks. The system's sink belongs to the platform and is made on first use, so that a host can set up the
/// log before it installs a platform.
///
/// The list is replaced whole: no sink is called, or destroyed, with the lock held.
class VLLog::Sinks {
public:
    std::shared_ptr<const Loggers> loggers() {
        {
            const std::lock_guard lock(mutex_);
            if (hasSystemLogger_) return loggers_;
        }
        insertSystemLogger(makeSystemLogger());
        const std::lock_guard lock(mutex_);
        return loggers_;
    }

    void add(std::shared_ptr<VLLogger> logger) {
        change([&logger](Loggers& loggers) { loggers.push_back(std::move(logger)); });
    }

    void remove(const std::shared_ptr<VLLogger>& logger) {
        change([&logger](Loggers& loggers) { std::erase(loggers, logger); });
    }

    /// Drops the previous platform's sink. A host that has removed that sink does not get the next platform's.
    void leavePlatform() {
        change([this](Loggers& loggers) {
            if (std::erase(loggers, systemLogger_.lock()) > 0) hasSystemLogger_ = false;
        });
    }

    void reset() {
        change([this](Loggers& loggers) {
            loggers.clear();
            hasSystemLogger_ = false;
        });
    }

private:
    void insertSystemLogger(const std::shared_ptr<VLLogger>& logger) {
        change([this, &logger](Loggers& loggers) {
            if (std::exchange(hasSystemLogger_, true)) return;
            loggers.insert(loggers.begin(), logger);
            systemLogger_ = logger;
        });
    }

    template <class Change>
    void change(Change change) {
        std::shared_ptr<const Loggers> before;
        const std::lock_guard lock(mutex_);
        Loggers changed = *loggers_;
        change(changed);
        before = std::exchange(loggers_, std::make_shared<const Loggers>(std::move(changed)));
    }

    std::mutex mutex_;
    // Guarded by mutex_.
    std::shared_ptr<const Loggers> loggers_ = std::make_shared<const Loggers>();
    std::weak_ptr<VLLogger> systemLogger_;
    bool hasSystemLogger_ = false;
};

/// The serial queue, which belongs to the platform and is made on first use.
class VLLog::Queue {
public:
    std::shared_ptr<DispatchQueue> get() {
        {
            const std::lock_guard lock(mutex_);
            if (queue_) return queue_;
        }
        auto made = Platform::current().makeSerialQueue("vorlane.sdk.logger");
        const std::lock_guard lock(mutex_);
        // If another thread was first, its queue is used: lines keep their order.
        if (!queue_) queue_.swap(made);
        return queue_;
    }

    void leavePlatform() {
        std::shared_ptr<DispatchQueue> queue;
        const std::lock_guard lock(mutex_);
        queue.swap(queue_);
    }

private:
    std::mutex mutex_;
    // Guarded by mutex_.
    std::shared_ptr<DispatchQueue> queue_;
};

VLLog& VLLog::sharedInstance() {
    // Never destroyed: a late thread or a host's static object may still log.
    static VLLog* const shared = [] {
        observePlatformInstalls([](bool isFirst) { sharedInstance().platformInstalled(isFirst); });
        return new VLLog;
    }();
    return *shared;
}

VLLog::VLLog() : logLevel_(kInitialLogLevel), sinks_(std::make_shared<Sinks>()), queue_(std::make_unique<Queue>()) {}

VLLog::~VLLog() = default;

void VLLog::platformInstalled(bool isFirst) {
    queue_->leavePlatform();
    if (isFirst) return sinks_->leavePlatform();
    setLogLevel(kInitialLogLevel);
    sinks_->reset();
}

void VLLog::addLogger(std::shared_ptr<VLLogger> logger) {
    if (logger) sinks_->add(std::move(logger));
}

void VLLog::removeLogger(const std::shared_ptr<VLLogger>& logger) { sinks_->remove(logger); }

VLLog::Loggers VLLog::loggers() const { return *sinks_->loggers(); }

void VLLog::logMessage(std::string message, std::optional<Value> payload, VLLogLevel level) {
    if (!logs(level)) return;
    queue_->get()->post([sinks = sinks_, message = std::move(message), payload = std::move(payload), level] {
        // Held during the loop: a sink may change the list.
        const auto loggers = sinks->loggers();
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

VLLogLevel VLLog::stringToLogLevel(const std::string& string) {
    if (string == VL_LOG_STRING_INFO) return VLLogLevel::Info;
    if (string == VL_LOG_STRING_WARN) return VLLogLevel::Warn;
    if (string == VL_LOG_STRING_ERROR) return VLLogLevel::Error;
    // Intended: "OFF" is unknown here, so the two conversions are not inverse.
    return VLLogLevel::Debug;
}

void logMessage(VLLogLevel level, std::string message) { logMessage(level, std::move(message), std::nullopt); }

void logMessage(VLLogLevel level, std::string message, std::optional<Value> payload) {
    auto& log = VLLog::sharedInstance();
    if (!log.logs(level)) return;
    log.logMessage(std::move(message), std::move(payload), level);
}

}  // namespace vorlane

#pragma once

#include "Public/VLLogger.h"

namespace vorlane {

/// A ready sink that writes each line to the console (standard error on Linux) with a time stamp in UTC and its level:
///
///     VLLog::sharedInstance().addLogger(std::make_shared<VLConsoleLogger>());
class VORLANE_EXPORT VLConsoleLogger : public VLLogger {
public:
    void logMessage(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) override;
};

}  // namespace vorlane

#pragma once

#include "Public/VLLogger.h"

namespace vorlane {

/// The sink that writes to the console.
class VLNSLogger : public VLLogger {
public:
    void logMessage(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) override;
};

}  // namespace vorlane

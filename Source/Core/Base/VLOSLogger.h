#pragma once

#include <memory>

#include "Public/VLLogger.h"

namespace vorlane {

class OSLog;

/// The sink that writes to the system's log, with the subsystem "vorlane.sdk" and the category "VL".
class VLOSLogger : public VLLogger {
public:
    /// Throws an `NSException` named "VLOSLogger Usage Exception" on a platform below 10.0.
    VLOSLogger();

    void logMessage(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) override;

private:
    const std::shared_ptr<OSLog> log_;
};

}  // namespace vorlane

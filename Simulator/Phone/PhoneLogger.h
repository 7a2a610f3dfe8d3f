#pragma once

#include <optional>
#include <string>

#include "Public/VLLogger.h"

namespace vorlane::phone {

class PhoneOutput;

/// The phone's log sink: each log line becomes an event.
class PhoneLogger : public VLLogger {
public:
    explicit PhoneLogger(PhoneOutput& output) : output_(output) {}

    void logMessage(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) override;

private:
    PhoneOutput& output_;
};

}  // namespace vorlane::phone

#pragma once

#include <mutex>
#include <string>

#include "Public/VLLogger.h"
#include "Public/VLValue.h"

namespace vorlane::phone {

/// Writes one JSON object a line to standard output, each whole and at once. Any thread. Ends the process quietly when
/// nobody reads any more.
class PhoneOutput {
public:
    void event(const std::string& name, Dictionary fields);
    void reply(const Value& id, Value value);
    void exception(const Value& id, const std::string& name, const std::string& reason);
    void error(const Value& id, const std::string& what);

private:
    void write(const Dictionary& line);

    std::mutex mutex_;
};

/// The phone's log sink: a line becomes an event.
class PhoneLogger : public VLLogger {
public:
    explicit PhoneLogger(PhoneOutput& output) : output_(output) {}

    void logMessage(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) override;

private:
    PhoneOutput& output_;
};

}  // namespace vorlane::phone

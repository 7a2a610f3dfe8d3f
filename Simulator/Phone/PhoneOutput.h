#pragma once

#include <mutex>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::phone {

/// Writes one JSON object a line to standard output, unbuffered and without mixing lines. Any thread. Ends the process
/// with status 0 if the output is closed.
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

}  // namespace vorlane::phone

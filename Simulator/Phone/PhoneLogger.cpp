#include "Simulator/Phone/PhoneLogger.h"

#include <cstdint>
#include <utility>

#include "Simulator/Phone/PhoneOutput.h"

namespace vorlane::phone {

void PhoneLogger::logMessage(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) {
    Dictionary fields{{"level", static_cast<std::uint64_t>(level)}, {"message", message}};
    if (payload) fields["payload"] = *payload;
    output_.event("log", std::move(fields));
}

}  // namespace vorlane::phone

#include "Core/Base/VLLogLine.h"

#include <fmt/format.h>

#include <cmath>
#include <ctime>

#include "Categories/NSDate+VLTimestamp.h"
#include "Categories/NSDictionary+VLJSON.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

std::string timeStamp(double time) {
    const auto milliseconds = static_cast<long long>(std::floor(time * 1000));
    const auto seconds = static_cast<std::time_t>(std::floor(time));
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", parts.tm_year + 1900, parts.tm_mon + 1,
                       parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                       milliseconds - static_cast<long long>(seconds) * 1000);
}

}  // namespace

std::string logLine(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) {
    std::string line = fmt::format("{} {} {}", timeStamp(vl_now()), VLLog::logLevelToString(level), message);
    if (payload) line += "\n" + vl_description(*payload);
    return line;
}

}  // namespace vorlane

#include "Platform/Linux/Device/LinuxOSLog.h"

// Every line would have the same location in this file.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <fmt/format.h>
#include <sys/uio.h>
#include <syslog.h>
#include <systemd/sd-journal.h>

#include <utility>

namespace vorlane {

namespace {

int priorityOf(OSLogType type) {
    switch (type) {
        case OSLogType::Error:
            return LOG_ERR;
        case OSLogType::DefaultType:
            return LOG_WARNING;
        case OSLogType::Info:
            return LOG_INFO;
        case OSLogType::Debug:
            return LOG_DEBUG;
    }
    return LOG_WARNING;
}

}  // namespace

LinuxOSLog::LinuxOSLog(std::string identifier, std::string subsystem, std::string category)
    : identifier_(std::move(identifier)), subsystem_(std::move(subsystem)), category_(std::move(category)) {}

void LinuxOSLog::log(OSLogType type, const std::string& text) {
    auto entry = fields(type, text);
    std::vector<iovec> vectors;
    vectors.reserve(entry.size());
    for (auto& field : entry) vectors.push_back({field.data(), field.size()});
    sd_journal_sendv(vectors.data(), static_cast<int>(vectors.size()));
}

std::vector<std::string> LinuxOSLog::fields(OSLogType type, const std::string& text) const {
    return {"MESSAGE=" + text, fmt::format("PRIORITY={}", priorityOf(type)), "SYSLOG_IDENTIFIER=" + identifier_,
            "VORLANE_SUBSYSTEM=" + subsystem_, "VORLANE_CATEGORY=" + category_};
}

}  // namespace vorlane

#pragma once

#include <string>
#include <vector>

#include "Platform/OSLog.h"

namespace vorlane {

/// A handle on the system journal. Without a journal, lines are dropped.
class LinuxOSLog : public OSLog {
public:
    /// `identifier` is the program's name in the journal, SYSLOG_IDENTIFIER.
    LinuxOSLog(std::string identifier, std::string subsystem, std::string category);

    void log(OSLogType type, const std::string& text) override;

    /// The fields of a journal entry, as "NAME=value".
    std::vector<std::string> fields(OSLogType type, const std::string& text) const;

private:
    const std::string identifier_;
    const std::string subsystem_;
    const std::string category_;
};

}  // namespace vorlane

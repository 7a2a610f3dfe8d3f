#pragma once

#include <string>
#include <vector>

#include "Platform/OSLog.h"

namespace vorlane {

/// A handle on the system journal. Without a journal its lines vanish.
class LinuxOSLog : public OSLog {
public:
    /// `identifier` names the program, as in the journal's SYSLOG_IDENTIFIER.
    LinuxOSLog(std::string identifier, std::string subsystem, std::string category);

    void log(OSLogType type, const std::string& text) override;

    /// One journal entry as "NAME=value" fields.
    std::vector<std::string> fields(OSLogType type, const std::string& text) const;

private:
    const std::string identifier_;
    const std::string subsystem_;
    const std::string category_;
};

}  // namespace vorlane

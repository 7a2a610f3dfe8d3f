#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "Public/VLLogger.h"

namespace vorlane {

class RotatingFile;

/// A ready sink that appends each line to a file with mode 0600, with a time stamp in UTC and its level:
///
///     VLLog::sharedInstance().addLogger(std::make_shared<VLFileLogger>("/var/log/app/vorlane.log"));
///
/// A full file is renamed to "PATH.1", the older "PATH.1" to "PATH.2", and so on. A line that cannot be written is
/// dropped; the first one in a row is reported on the console, and the next line tries again. The folder must exist.
/// One process per file.
class VORLANE_EXPORT VLFileLogger : public VLLogger {
public:
    struct Limits {
        /// The size in bytes that a file does not exceed, unless a single line does.
        std::size_t longestSize = std::size_t{1} << 20;
        /// How many renamed files are kept. 0: a full file is deleted.
        std::size_t keptFiles = 3;
    };

    explicit VLFileLogger(std::string path);
    VLFileLogger(std::string path, Limits limits);
    ~VLFileLogger() override;
    VLFileLogger(const VLFileLogger&) = delete;
    VLFileLogger& operator=(const VLFileLogger&) = delete;

    void logMessage(const std::string& message, const std::optional<Value>& payload, VLLogLevel level) override;

private:
    // Log queue only.
    const std::unique_ptr<RotatingFile> file_;
    bool hasFailed_ = false;
};

}  // namespace vorlane

#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Simulator/Platform/SystemLogLine.h"

namespace vorlane {

class OSLog;

/// Keeps every line written to the simulated phone's system log and console. Any thread.
class SimulatedSystemLog : public std::enable_shared_from_this<SimulatedSystemLog> {
public:
    /// Returns a handle that writes to this log and keeps it alive.
    std::shared_ptr<OSLog> makeOSLog(const std::string& subsystem, const std::string& category);
    void add(SystemLogLine line);
    void addConsoleLine(const std::string& line);

    std::vector<SystemLogLine> lines() const;
    std::vector<std::string> console() const;

private:
    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::vector<SystemLogLine> lines_;
    std::vector<std::string> console_;
};

}  // namespace vorlane

#include "Simulator/Platform/Internal/SimulatedSystemLog.h"

#include <cstdint>
#include <utility>

#include "Platform/OSLog.h"

namespace vorlane {

namespace {

class SimulatedOSLog : public OSLog {
public:
    SimulatedOSLog(std::string subsystem, std::string category, std::shared_ptr<SimulatedSystemLog> log)
        : subsystem_(std::move(subsystem)), category_(std::move(category)), log_(std::move(log)) {}

    void log(OSLogType type, const std::string& text) override {
        log_->add({subsystem_, category_, static_cast<std::uint8_t>(type), text});
    }

private:
    const std::string subsystem_;
    const std::string category_;
    const std::shared_ptr<SimulatedSystemLog> log_;
};

}  // namespace

std::shared_ptr<OSLog> SimulatedSystemLog::makeOSLog(const std::string& subsystem, const std::string& category) {
    return std::make_shared<SimulatedOSLog>(subsystem, category, shared_from_this());
}

void SimulatedSystemLog::add(SystemLogLine line) {
    const std::lock_guard lock(mutex_);
    lines_.push_back(std::move(line));
}

void SimulatedSystemLog::addConsoleLine(const std::string& line) {
    const std::lock_guard lock(mutex_);
    console_.push_back(line);
}

std::vector<SystemLogLine> SimulatedSystemLog::lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
}

std::vector<std::string> SimulatedSystemLog::console() const {
    const std::lock_guard lock(mutex_);
    return console_;
}

}  // namespace vorlane

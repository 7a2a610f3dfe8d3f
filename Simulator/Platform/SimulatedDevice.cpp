#include "Simulator/Platform/SimulatedDevice.h"

#include <ctime>
#include <utility>

namespace vorlane {

SimulatedDevice::SimulatedDevice(std::string systemVersion) : systemVersion_(std::move(systemVersion)) {}

std::string SimulatedDevice::systemName() const { return "iOS"; }

std::string SimulatedDevice::systemVersion() const {
    const std::lock_guard lock(mutex_);
    return systemVersion_;
}

std::string SimulatedDevice::machine() const { return "Simulated1,1"; }

std::vector<std::string> SimulatedDevice::preferredLanguages() const {
    const std::lock_guard lock(mutex_);
    return preferredLanguages_;
}

NSTimeZone SimulatedDevice::localTimeZone() const {
    const std::lock_guard lock(mutex_);
    if (localTimeZone_) return *localTimeZone_;
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return {local.tm_zone ? local.tm_zone : "", local.tm_gmtoff};
}

void SimulatedDevice::setPreferredLanguages(std::vector<std::string> languages) {
    const std::lock_guard lock(mutex_);
    preferredLanguages_ = std::move(languages);
}

void SimulatedDevice::setLocalTimeZone(NSTimeZone zone) {
    const std::lock_guard lock(mutex_);
    localTimeZone_ = std::move(zone);
}

}  // namespace vorlane

#include "Simulator/Platform/SimulatedDevice.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "Platform/Platform.h"

namespace vorlane {

namespace {

/// The zone's name if `TZ` holds one ("Europe/Oslo", not "CET-1CEST,M3.5.0/2"), else its abbreviation.
std::string zoneName(const char* abbreviation) {
    const char* variable = std::getenv("TZ");
    std::string name = variable ? variable : "";
    if (name.starts_with(':')) name.erase(0, 1);
    const bool isName =
        name.find('/') != std::string::npos && !name.starts_with('/') && name.find(',') == std::string::npos;
    if (isName) return name;
    return abbreviation ? abbreviation : "";
}

}  // namespace

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
    // Clamped to the years that the calendar represents.
    const auto now = static_cast<std::time_t>(std::clamp(Platform::current().clock().now(), -6e10, 2.5e11));
    std::tm local{};
    tzset();
    localtime_r(&now, &local);
    return {zoneName(local.tm_zone), local.tm_gmtoff};
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

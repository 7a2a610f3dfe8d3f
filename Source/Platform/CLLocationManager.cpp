#include "Platform/CLLocationManager.h"

namespace vorlane {

namespace {

constexpr std::size_t kMaximumMonitoredRegionCount = 500;

}  // namespace

CLLocationManagerDelegate::~CLLocationManagerDelegate() = default;
CLLocationManager::~CLLocationManager() = default;

std::size_t CLLocationManager::maximumMonitoredRegionCount() const { return kMaximumMonitoredRegionCount; }

}  // namespace vorlane

#include "Platform/Linux/LinuxLocationManager.h"

#include <utility>

#include "Platform/DispatchQueue.h"

namespace vorlane {

namespace {

constexpr double kLargestRadius = 1'000'000;

}  // namespace

LinuxLocationManager::LinuxLocationManager(std::weak_ptr<DispatchQueue> mainQueue, std::string regionsPath)
    : mainQueue_(std::move(mainQueue)), monitoredRegions_(std::move(regionsPath)) {}

void LinuxLocationManager::setDelegate(std::weak_ptr<CLLocationManagerDelegate> delegate) {
    const std::lock_guard lock(mutex_);
    delegate_ = std::move(delegate);
}

void LinuxLocationManager::startMonitoringForRegion(const std::shared_ptr<CLRegion>& region) {
    {
        const std::lock_guard lock(mutex_);
        monitoredRegions_.add(region);
    }
    const auto queue = mainQueue_.lock();
    if (!queue) return;
    queue->post([weakSelf = weak_from_this(), region] {
        const auto self = weakSelf.lock();
        if (!self) return;
        std::shared_ptr<CLLocationManagerDelegate> delegate;
        {
            const std::lock_guard lock(self->mutex_);
            delegate = self->delegate_.lock();
        }
        if (delegate) delegate->didStartMonitoringForRegion(*self, region);
    });
}

void LinuxLocationManager::stopMonitoringForRegion(const std::shared_ptr<CLRegion>& region) {
    const std::lock_guard lock(mutex_);
    monitoredRegions_.remove(region->identifier());
}

std::vector<std::shared_ptr<CLRegion>> LinuxLocationManager::monitoredRegions() const {
    const std::lock_guard lock(mutex_);
    return monitoredRegions_.all();
}

double LinuxLocationManager::maximumRegionMonitoringDistance() const { return kLargestRadius; }

}  // namespace vorlane

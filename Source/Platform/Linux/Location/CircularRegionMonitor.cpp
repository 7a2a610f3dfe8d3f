#include "Platform/Linux/Location/CircularRegionMonitor.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vorlane {

void CircularRegionMonitor::watch(const std::shared_ptr<CLRegion>& region, CLRegionState state, double /*now*/) {
    forget(region->identifier());
    auto circle = std::dynamic_pointer_cast<CLCircularRegion>(region);
    if (circle) circles_[region->identifier()] = {std::move(circle), state};
}

void CircularRegionMonitor::forget(const std::string& identifier) { circles_.erase(identifier); }

RegionMonitor::Changes CircularRegionMonitor::positionArrived(const CLLocation& position) {
    Changes changes;
    const bool isAccurate = std::isfinite(position.horizontalAccuracy) && position.horizontalAccuracy >= 0;
    if (!isAccurate || !CLLocationCoordinate2DIsValid(position.coordinate)) return changes;
    lastPosition_ = position;
    for (auto& [identifier, watched] : circles_) {
        const auto state = stateAt(position, *watched.circle, watched.state);
        const auto before = std::exchange(watched.state, state);
        if (state != before) changes.push_back({watched.circle, state, before != CLRegionState::Unknown});
    }
    return changes;
}

CLRegionState CircularRegionMonitor::stateAtLastPosition(const CLRegion& region) const {
    const auto* circle = dynamic_cast<const CLCircularRegion*>(&region);
    if (!circle || !lastPosition_) return CLRegionState::Unknown;
    return stateAt(*lastPosition_, *circle, CLRegionState::Unknown);
}

CLRegionState CircularRegionMonitor::stateAt(const CLLocation& position, const CLCircularRegion& circle,
                                             CLRegionState before) {
    double border = circle.radius();
    if (before == CLRegionState::Inside) border += position.horizontalAccuracy;
    if (before == CLRegionState::Outside) border -= std::min(position.horizontalAccuracy, border / 2);
    const double distance = CLDistanceBetween(position.coordinate, circle.center());
    return distance <= border ? CLRegionState::Inside : CLRegionState::Outside;
}

}  // namespace vorlane

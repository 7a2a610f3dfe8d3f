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
    const bool isValid = std::isfinite(position.horizontalAccuracy) && position.horizontalAccuracy >= 0;
    if (!isValid || !CLLocationCoordinate2DIsValid(position.coordinate)) return changes;
    for (auto& [identifier, watched] : circles_) {
        const auto state = stateAt(position, watched);
        const auto before = std::exchange(watched.state, state);
        if (state != before) changes.push_back({watched.circle, state, before != CLRegionState::Unknown});
    }
    return changes;
}

CLRegionState CircularRegionMonitor::stateAt(const CLLocation& position, const Watched& watched) {
    const double distance = CLDistanceBetween(position.coordinate, watched.circle->center());
    double border = watched.circle->radius();
    if (watched.state == CLRegionState::Inside) border += position.horizontalAccuracy;
    if (watched.state == CLRegionState::Outside) border -= std::min(position.horizontalAccuracy, border / 2);
    return distance <= border ? CLRegionState::Inside : CLRegionState::Outside;
}

}  // namespace vorlane

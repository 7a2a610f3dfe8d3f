#pragma once

#include <map>

#include "Platform/CLCircularRegion.h"
#include "Platform/Linux/Location/RegionMonitor.h"

namespace vorlane {

/// Watches circles: the distance along the great circle from the centre decides.
///
/// The first fix decides the state by the radius alone. From then on a fix counts only as far as its accuracy allows:
/// entering takes a fix that is inside by its accuracy (by half the radius at most, or a small circle could not be
/// entered at all), leaving one that is outside by its accuracy.
class CircularRegionMonitor : public RegionMonitor {
public:
    void watch(const std::shared_ptr<CLRegion>& region, CLRegionState state, double now) override;
    void forget(const std::string& identifier) override;
    bool isNeeded() const override { return !circles_.empty(); }
    Changes positionArrived(const CLLocation& position) override;

private:
    struct Watched {
        std::shared_ptr<CLCircularRegion> circle;
        CLRegionState state;
    };

    static CLRegionState stateAt(const CLLocation& position, const Watched& watched);

    std::map<std::string, Watched> circles_;
};

}  // namespace vorlane

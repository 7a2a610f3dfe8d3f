#pragma once

#include <map>
#include <optional>

#include "Platform/CLCircularRegion.h"
#include "Platform/Linux/Location/RegionMonitor.h"

namespace vorlane {

/// Watches circles. The great-circle distance of a fix from the centre decides.
///
/// While the state of a circle is unknown, a fix decides it by the radius alone. A crossing takes the accuracy of the
/// fix into account: the device enters at a fix that is inside by its accuracy, and leaves at a fix that is outside by
/// its accuracy. For an entry the accuracy counts as half the radius at most, so that small circles can be entered.
class CircularRegionMonitor : public RegionMonitor {
public:
    void watch(const std::shared_ptr<CLRegion>& region, CLRegionState state, double now) override;
    void forget(const std::string& identifier) override;
    bool isNeeded() const override { return !circles_.empty(); }
    Changes positionArrived(const CLLocation& position) override;

    /// Returns the state of a circle at the last valid fix. Unknown before the first one, and for other regions.
    CLRegionState stateAtLastPosition(const CLRegion& region) const;

private:
    struct Watched {
        std::shared_ptr<CLCircularRegion> circle;
        CLRegionState state;
    };

    static CLRegionState stateAt(const CLLocation& position, const CLCircularRegion& circle, CLRegionState before);

    std::map<std::string, Watched> circles_;
    std::optional<CLLocation> lastPosition_;
};

}  // namespace vorlane

#pragma once

#include <memory>
#include <string>

#include "Platform/CLLocation.h"

namespace vorlane {

class CLCircularRegion;

/// A circle as a region record tells it, on its way to becoming a region of the platform.
struct VLGeoRegionInfo {
    /// Metres.
    double radius = 0;
    std::string identifier = {};
    /// Degrees.
    CLLocationCoordinate2D center = {};

    std::shared_ptr<CLCircularRegion> toCLRegion() const;
};

}  // namespace vorlane

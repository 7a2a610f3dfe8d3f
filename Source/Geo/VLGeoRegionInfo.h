#pragma once

#include <memory>
#include <string>

#include "Platform/CLLocation.h"

namespace vorlane {

class CLCircularRegion;

/// The circle of a region record, which `toCLRegion` converts into a region of the platform.
struct VLGeoRegionInfo {
    /// Metres.
    double radius = 0;
    std::string identifier = {};
    /// Degrees.
    CLLocationCoordinate2D center = {};

    std::shared_ptr<CLCircularRegion> toCLRegion() const;
};

}  // namespace vorlane

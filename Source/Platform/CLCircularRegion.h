#pragma once

#include <string>
#include <utility>

#include "Platform/CLLocation.h"
#include "Platform/CLRegion.h"
#include "Public/VLExport.h"

namespace vorlane {

/// A circle on the globe. Immutable.
class VORLANE_EXPORT CLCircularRegion : public CLRegion {
public:
    /// `initWithCenter:radius:identifier:` takes the radius in metres.
    CLCircularRegion(CLLocationCoordinate2D center, double radius, std::string identifier)
        : CLRegion(std::move(identifier)), center_(center), radius_(radius) {}

    CLLocationCoordinate2D center() const { return center_; }
    double radius() const { return radius_; }

    std::string description() const override;
    Dictionary toDictionary() const override;

private:
    const CLLocationCoordinate2D center_;
    const double radius_;
};

}  // namespace vorlane

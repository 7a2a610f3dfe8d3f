#include "Geo/VLGeoRegionInfo.h"

#include "Platform/CLCircularRegion.h"

namespace vorlane {

std::shared_ptr<CLCircularRegion> VLGeoRegionInfo::toCLRegion() const {
    return std::make_shared<CLCircularRegion>(center, radius, identifier);
}

}  // namespace vorlane

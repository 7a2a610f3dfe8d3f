#include "Platform/CLCircularRegion.h"

#include <fmt/format.h>

namespace vorlane {

std::string CLCircularRegion::description() const {
    return fmt::format("CLCircularRegion (identifier:'{}', center:<{:+.8f},{:+.8f}>, radius:{:.2f}m)", identifier(),
                       center_.latitude, center_.longitude, radius_);
}

Dictionary CLCircularRegion::toDictionary() const {
    return {{"type", "circular"},
            {"identifier", identifier()},
            {"latitude", center_.latitude},
            {"longitude", center_.longitude},
            {"radius", radius_}};
}

}  // namespace vorlane

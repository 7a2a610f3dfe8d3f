#include "Geo/VLLocationHelper.h"

#include <utility>

#include "Platform/CLLocationManager.h"
#include "Platform/NSBundle.h"

namespace vorlane {

VLLocationHelper::VLLocationHelper(std::shared_ptr<NSBundle> mainBundle,
                                   std::shared_ptr<CLLocationManager> locationManager)
    : mainBundle_(std::move(mainBundle)), locationManager_(std::move(locationManager)) {}

bool VLLocationHelper::isAppEnabledForBackgroundLocation() const {
    return mainBundle_->objectForInfoDictionaryKey("NSLocationAlwaysUsageDescription").has_value();
}

bool VLLocationHelper::isRegionMonitoringAvailable() const {
    return locationManager_->isMonitoringAvailableForClass(CLRegionClass::CLRegion);
}

}  // namespace vorlane

#include "Platform/CLLocationManager.h"

namespace vorlane {

CLLocationManagerDelegate::~CLLocationManagerDelegate() = default;
CLLocationManager::~CLLocationManager() = default;

}  // namespace vorlane

#pragma once

#include <memory>

namespace vorlane {

class CLLocationManager;
class NSBundle;

/// Answers two questions about the application's bundle and the device. Any thread.
class VLLocationHelper {
public:
    VLLocationHelper(std::shared_ptr<NSBundle> mainBundle, std::shared_ptr<CLLocationManager> locationManager);

    /// Whether the bundle has the key "NSLocationAlwaysUsageDescription".
    bool isAppEnabledForBackgroundLocation() const;
    bool isRegionMonitoringAvailable() const;

private:
    // Fixed at construction.
    const std::shared_ptr<NSBundle> mainBundle_;
    const std::shared_ptr<CLLocationManager> locationManager_;
};

}  // namespace vorlane

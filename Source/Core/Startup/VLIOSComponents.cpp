#include "Core/Startup/VLIOSComponents.h"

#include "Core/Startup/VLBootstrap.h"
#include "Network/VLURLSession.h"
#include "Platform/CLLocationManager.h"
#include "Platform/NSBundle.h"
#include "Platform/NSNotificationCenter.h"
#include "Platform/NSURLSession.h"
#include "Platform/Platform.h"
#include "Platform/UIApplication.h"
#include "Platform/UIDevice.h"
#include "Platform/UNUserNotificationCenter.h"

namespace vorlane {

namespace {

constexpr double kFirstVersionWithNotificationCenter = 10.0;

std::shared_ptr<NSURLSession> createURLSession() {
    NSURLSessionConfiguration configuration;
    configuration.timeoutIntervalForRequest = VLURLSession::kTimeoutIntervalForRequest;
    return Platform::current().makeURLSession(configuration);
}

}  // namespace

void VLIOSComponents::defaultUIKitDependencies() {
    bootstrap_.addComponent<NSURLSession>(createURLSession);
    bootstrap_.addComponent<UIDevice>([] { return Platform::current().device(); });
    bootstrap_.addComponent<UIApplication>([] { return Platform::current().application(); });
    bootstrap_.addComponent<NSNotificationCenter>([] { return Platform::current().notificationCenter(); });
    bootstrap_.addComponent<NSBundle>([] { return Platform::current().mainBundle(); });
    if (Platform::current().systemVersion() >= kFirstVersionWithNotificationCenter) {
        bootstrap_.addComponent<UNUserNotificationCenter>([] { return Platform::current().userNotificationCenter(); });
    }
}

void VLIOSComponents::defaultCoreLocationDependencies() {
    bootstrap_.addComponent<CLLocationManager>([] { return Platform::current().locationManager(); });
}

}  // namespace vorlane

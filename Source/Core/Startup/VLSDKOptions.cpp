#include "Public/VLSDKOptions.h"

namespace vorlane {

VLSDKOptions VLSDKOptions::defaultOptions() {
    VLSDKOptions options;
    options.setCommonOptions();
    options.setLogLevel(VLLogLevel::Info);
    return options;
}

VLSDKOptions VLSDKOptions::developmentOptions() {
    VLSDKOptions options;
    options.setCommonOptions();
    options.setLogLevel(VLLogLevel::Debug);
    return options;
}

void VLSDKOptions::setCommonOptions() { setProvidesAppNotificationSettings(false); }

}  // namespace vorlane

#include "Simulator/Platform/SimulatedPush.h"

#include <utility>

#include "Platform/UIApplication.h"
#include "Public/VLConstants.h"

namespace vorlane {

Dictionary SimulatedPush::userInfo() const {
    Dictionary aps;
    if (alert) {
        aps["alert"] = *alert;
    } else {
        aps["content-available"] = 1;
    }
    if (sound) aps["sound"] = *sound;
    if (badge) aps["badge"] = *badge;
    auto payload = data;
    payload["aps"] = Value(std::move(aps));
    if (phash) payload[VL_NOTIFICATION_KEY_PHASH] = *phash;
    return payload;
}

Dictionary SimulatedPush::launchOptions() const {
    return {{UIApplicationLaunchOptionsRemoteNotificationKey, Value(userInfo())}};
}

}  // namespace vorlane

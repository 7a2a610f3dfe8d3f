#include "Notifications/VLNotificationHelper.h"

#include <fmt/format.h>

#include <utility>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Categories/NSDate+VLTimestamp.h"
#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Platform/NSBundle.h"
#include "Platform/UIApplication.h"
#include "Platform/UIDevice.h"
#include "Public/VLConstants.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

/// The sound name in the content of the message, if any.
std::optional<std::string> soundNameIn(const Dictionary& message) {
    const auto content = stringForKey(message, "messagecontent");
    const auto decoded = content ? stringByRemovingPercentEncoding(*content) : std::nullopt;
    if (!decoded || decoded->empty()) return std::nullopt;
    std::optional<NSError> error;
    const auto object = vl_dictionaryWithJSON(decoded, error);
    return object ? stringForKey(*object, "sound") : std::nullopt;
}

}  // namespace

VLNotificationHelper::VLNotificationHelper(std::shared_ptr<UIApplication> application, std::shared_ptr<UIDevice> device,
                                           std::shared_ptr<NSBundle> mainBundle)
    : application_(std::move(application)), device_(std::move(device)), mainBundle_(std::move(mainBundle)) {}

void VLNotificationHelper::displayLocalNotification(const std::optional<std::string>& text,
                                                    const std::optional<std::string>& phash,
                                                    const std::optional<std::string>& sound,
                                                    const std::optional<Dictionary>& metadata) const {
    UILocalNotification notification;
    notification.fireDate = vl_now();
    notification.timeZone = defaultTimeZone();
    notification.alertBody = text;
    notification.soundName = sound;
    auto userInfo = metadata.value_or(Dictionary());
    if (phash) userInfo[VL_NOTIFICATION_KEY_PHASH] = *phash;
    notification.userInfo = std::move(userInfo);
    onMainQueue([application = application_, notification] { application->scheduleLocalNotification(notification); });
}

std::string VLNotificationHelper::getNotificationSoundFromMessageData(const Dictionary& message) const {
    const auto name = soundNameIn(message);
    if (!name) return UILocalNotificationDefaultSoundName;
    for (const auto* const type : {"wav", "caf"}) {
        if (mainBundle_->pathForResource(*name, type)) return fmt::format("{}.{}", *name, type);
    }
    // Intended: the message does not say that the file is missing.
    logMessage(
        VLLogLevel::Error,
        fmt::format("Notification sound with filename \"{}\" in app bundle. Using default sound instead.", *name));
    return UILocalNotificationDefaultSoundName;
}

std::optional<std::string> VLNotificationHelper::defaultTimeZone() const {
    auto name = device_->localTimeZone().name;
    if (name.empty()) return std::nullopt;
    return name;
}

}  // namespace vorlane

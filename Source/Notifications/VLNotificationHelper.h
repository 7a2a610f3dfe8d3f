#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

class NSBundle;
class UIApplication;
class UIDevice;

/// Shows a local notification at once, and picks the sound of a server's message. Any thread.
class VLNotificationHelper {
public:
    /// `init:`, with the device for its time zone, and the bundle for its sounds.
    VLNotificationHelper(std::shared_ptr<UIApplication> application, std::shared_ptr<UIDevice> device,
                         std::shared_ptr<NSBundle> mainBundle);

    /// `displayLocalNotification:phash:sound:metadata:` hands a notification that is due now to the platform, on the
    /// main queue, silent without a sound. Its user info is the metadata, with the phash when there is one.
    void displayLocalNotification(const std::optional<std::string>& text, const std::optional<std::string>& phash,
                                  const std::optional<std::string>& sound,
                                  const std::optional<Dictionary>& metadata) const;

    /// `getNotificationSoundFromMessageData:` gives the file name of the sound that the message names, when the bundle
    /// has it as a "wav" or a "caf" file; else the platform's default sound.
    std::string getNotificationSoundFromMessageData(const Dictionary& message) const;

    /// The name of the zone that fire dates are meant in; nothing when the system does not tell.
    std::optional<std::string> defaultTimeZone() const;

private:
    // Fixed at construction.
    const std::shared_ptr<UIApplication> application_;
    const std::shared_ptr<UIDevice> device_;
    const std::shared_ptr<NSBundle> mainBundle_;
};

}  // namespace vorlane

#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

class NSBundle;
class UIApplication;
class UIDevice;

/// Shows local notifications immediately and chooses the sound for messages from the server. Any thread.
class VLNotificationHelper {
public:
    /// `init:`; the device supplies the time zone, the bundle the sounds.
    VLNotificationHelper(std::shared_ptr<UIApplication> application, std::shared_ptr<UIDevice> device,
                         std::shared_ptr<NSBundle> mainBundle);

    /// `displayLocalNotification:phash:sound:metadata:` schedules a notification that is due now, on the main queue. It
    /// is silent without a sound. Its user info is the metadata with the phash, if any, added.
    void displayLocalNotification(const std::optional<std::string>& text, const std::optional<std::string>& phash,
                                  const std::optional<std::string>& sound,
                                  const std::optional<Dictionary>& metadata) const;

    /// `getNotificationSoundFromMessageData:` returns the file name of the sound that the message names if the bundle
    /// has it as a "wav" or a "caf" file, otherwise the platform's default sound.
    std::string getNotificationSoundFromMessageData(const Dictionary& message) const;

    /// The name of the time zone of fire dates, or `nullopt` if the system does not know it.
    std::optional<std::string> defaultTimeZone() const;

private:
    // Fixed at construction.
    const std::shared_ptr<UIApplication> application_;
    const std::shared_ptr<UIDevice> device_;
    const std::shared_ptr<NSBundle> mainBundle_;
};

}  // namespace vorlane

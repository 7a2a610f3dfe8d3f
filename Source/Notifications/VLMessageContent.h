#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

class VLNotificationHelper;
class VLSettings;

/// What a message template of the server says, read for the services that show it as a local notification. Immutable.
class VLMessageContent {
public:
    /// `initContentWithResponse:withSettings:withNotificationHelper:`; nothing when the response holds no template for
    /// this application.
    static std::optional<VLMessageContent> contentWithResponse(const Dictionary& response, const VLSettings& settings,
                                                               const VLNotificationHelper& notificationHelper);

    /// `isTemplateMessageExist:` tells whether the response holds a message for this application.
    static bool isTemplateMessageExist(const Dictionary& response, const VLSettings& settings);

    /// Decoded; as it stands where it cannot be decoded.
    const std::optional<std::string>& pushText() const { return pushText_; }
    /// The object in the message's content; empty when there is none.
    const Dictionary& metadata() const { return metadata_; }
    const std::optional<std::string>& phash() const { return phash_; }
    /// A file of the bundle, or the platform's default sound.
    const std::string& sound() const { return sound_; }

private:
    VLMessageContent(const Dictionary& message, const VLNotificationHelper& notificationHelper);

    std::optional<std::string> pushText_;
    Dictionary metadata_;
    std::optional<std::string> phash_;
    std::string sound_;
};

}  // namespace vorlane

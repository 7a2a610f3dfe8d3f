#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

class VLNotificationHelper;
class VLSettings;

/// A message template from the server, read for the services that show it as a local notification. Immutable.
class VLMessageContent {
public:
    /// `initContentWithResponse:withSettings:withNotificationHelper:` returns `nullopt` if the response holds no
    /// template for this application.
    static std::optional<VLMessageContent> contentWithResponse(const Dictionary& response, const VLSettings& settings,
                                                               const VLNotificationHelper& notificationHelper);

    /// `isTemplateMessageExist:` returns whether the response holds a message for this application.
    static bool isTemplateMessageExist(const Dictionary& response, const VLSettings& settings);

    /// The percent-decoded text; the encoded text if it cannot be decoded.
    const std::optional<std::string>& pushText() const { return pushText_; }
    /// The JSON object in the content of the message; empty if there is none.
    const Dictionary& metadata() const { return metadata_; }
    const std::optional<std::string>& phash() const { return phash_; }
    /// The name of a file in the bundle, or the platform's default sound.
    const std::string& sound() const { return sound_; }

private:
    VLMessageContent(const Dictionary& message, const VLNotificationHelper& notificationHelper);

    std::optional<std::string> pushText_;
    Dictionary metadata_;
    std::optional<std::string> phash_;
    std::string sound_;
};

}  // namespace vorlane

#include "Notifications/VLMessageContent.h"

#include <fmt/format.h>

#include <utility>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Core/Base/VLSettings.h"
#include "Notifications/VLNotificationHelper.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

constexpr const char* kMessageKey = "message";

std::optional<std::string> decodedText(const Dictionary& message, const char* key) {
    auto text = stringForKey(message, key);
    if (!text) return std::nullopt;
    auto decoded = stringByRemovingPercentEncoding(*text);
    return decoded ? std::move(decoded) : std::move(text);
}

Dictionary metadataIn(const Dictionary& message) {
    const auto content = stringForKey(message, "messagecontent");
    if (!content || content->empty()) return {};
    const auto decoded = stringByRemovingPercentEncoding(*content);
    if (!decoded || decoded->empty()) {
        logMessage(VLLogLevel::Error, "Couldn't remove percent encoding on metadata", *content);
        return {};
    }
    std::optional<NSError> error;
    auto object = vl_dictionaryWithJSON(decoded, error);
    if (object) return std::move(*object);
    logMessage(VLLogLevel::Error, "Couldn't parse metadata JSON into dictionary object", *decoded);
    return {};
}

}  // namespace

std::optional<VLMessageContent> VLMessageContent::contentWithResponse(const Dictionary& response,
                                                                      const VLSettings& settings,
                                                                      const VLNotificationHelper& notificationHelper) {
    const auto* message = dictionaryForKey(response, kMessageKey);
    if (!isTemplateMessageExist(response, settings) || !message) {
        logMessage(VLLogLevel::Debug, "No message template found in JSON payload", response);
        return std::nullopt;
    }
    return VLMessageContent(*message, notificationHelper);
}

bool VLMessageContent::isTemplateMessageExist(const Dictionary& response, const VLSettings& settings) {
    if (!valueForKey(response, kMessageKey)) {
        // Intended: the missing message is logged as "(null)".
        logMessage(VLLogLevel::Debug, "Could not parse the message data: (null)");
        return false;
    }
    const auto* message = dictionaryForKey(response, kMessageKey);
    const auto appKey = message ? stringForKey(*message, "appkey") : std::nullopt;
    return appKey && appKey == settings.appKey();
}

VLMessageContent::VLMessageContent(const Dictionary& message, const VLNotificationHelper& notificationHelper)
    : pushText_(decodedText(message, "pushtext")),
      metadata_(metadataIn(message)),
      phash_(stringForKey(message, "phash")),
      sound_(notificationHelper.getNotificationSoundFromMessageData(message)) {}

}  // namespace vorlane

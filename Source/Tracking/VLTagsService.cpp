#include "Tracking/VLTagsService.h"

#include <fmt/format.h>

#include <utility>

#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Core/Base/VLCompletion.h"
#include "Core/Base/VLError.h"
#include "Core/Base/VLSettings.h"
#include "Network/VLPayloadBuilder.h"
#include "Network/VLPayloadOptions.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Platform/NSException.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

enum class TagError : std::int64_t { BlankName = 0, UnknownTrackingId = 1, NoSuchTag = 2 };

NSError tagError(TagError code, const std::string& description) {
    return VLError::errorWithDomain(VLErrorDomainTag, static_cast<std::int64_t>(code), description);
}

bool isBlank(const std::optional<std::string>& name) { return !name || name->empty(); }

/// The value as a string. A boolean is a number for the service: "1" or "0".
std::string textOf(const Value& value) {
    if (value.is_boolean()) return value.get<bool>() ? "1" : "0";
    return stringValue(value).value_or(vl_description(value));
}

void completeWithAnswer(const Dictionary& answer, const std::string& name, const std::string& trackingId,
                        const VLTagsService::TagHandler& handler) {
    if (valueForKey(answer, "error")) {
        logMessage(VLLogLevel::Error, fmt::format("Tags: tracking id {} not found", trackingId));
        const auto text = fmt::format("Could not get tag because the tracking id {} was not found", trackingId);
        return completeOnMainQueue(handler, std::nullopt, tagError(TagError::UnknownTrackingId, text));
    }
    const auto* value = valueForKey(answer, "value");
    if (!value) return completeOnMainQueue(handler, std::nullopt, std::nullopt);
    if (value->is_null()) {
        logMessage(VLLogLevel::Error, fmt::format("Tags: tag with name \"{}\" does not exist", name));
        const auto text = fmt::format("Tag with name {} does not exist", name);
        return completeOnMainQueue(handler, std::nullopt, tagError(TagError::NoSuchTag, text));
    }
    completeOnMainQueue(handler, textOf(*value), std::nullopt);
}

/// A text handler that passes on only the error.
VLURLSession::TextHandler errorOnly(VLTagsService::ErrorHandler handler) {
    return [handler = std::move(handler)](const std::optional<std::string>& /*text*/, std::int64_t /*statusCode*/,
                                          const std::optional<NSError>& error) { completeOnMainQueue(handler, error); };
}

}  // namespace

VLTagsService::VLTagsService(std::shared_ptr<VLSettings> settings, std::shared_ptr<VLURLBuilder> urlBuilder,
                             std::shared_ptr<VLPayloadBuilder> postBuilder, std::shared_ptr<VLURLSession> urlSession)
    : settings_(std::move(settings)),
      urlBuilder_(std::move(urlBuilder)),
      postBuilder_(std::move(postBuilder)),
      urlSession_(std::move(urlSession)) {}

void VLTagsService::getTag(const std::optional<std::string>& name, TagHandler completionHandler) {
    if (isBlank(name)) {
        logMessage(VLLogLevel::Error, "Tags: cannot get tag with nil or blank name");
        return completeOnMainQueue(completionHandler, std::nullopt,
                                   tagError(TagError::BlankName, "Cannot get tag with nil or blank name"));
    }
    const auto trackingId = settings_->trackingId();
    urlSession_->GETJSON(
        urlBuilder_->tagURLWithTagName(*name),
        [name = *name, trackingId, handler = std::move(completionHandler)](
            const std::optional<Dictionary>& answer, std::int64_t /*statusCode*/, const std::optional<NSError>& error) {
            if (answer && !error) return completeWithAnswer(*answer, name, trackingId, handler);
            logMessage(VLLogLevel::Error, fmt::format("Tags: error retrieving {} tag.", name));
            completeOnMainQueue(handler, std::nullopt, error);
        });
}

void VLTagsService::setTag(const std::optional<std::string>& name, const std::optional<std::string>& value,
                           VLTagType type, ErrorHandler completionHandler) {
    if (isBlank(name)) {
        logMessage(VLLogLevel::Error, "Tags: cannot set tag with nil or blank name");
        return completeOnMainQueue(completionHandler,
                                   tagError(TagError::BlankName, "Cannot set tag with nil or blank name"));
    }
    const auto typeText = tagTypeToString(type);
    logMessage(VLLogLevel::Debug, fmt::format("Tags: set tag with Name: \"{}\", Value: \"{}\", Type: \"{}\"", *name,
                                              vl_description(value), typeText));
    Dictionary body{{"name", *name}, {"type", typeText}};
    if (value) body["value"] = *value;
    postTags(std::move(body), std::move(completionHandler));
}

void VLTagsService::batchSetTags(const Value& tags, ErrorHandler completionHandler) {
    logMessage(VLLogLevel::Debug, fmt::format("Tags: batch set tags: {}", vl_description(tags)));
    postTags({{"tags", tags}}, std::move(completionHandler));
}

void VLTagsService::postTags(Dictionary body, ErrorHandler completionHandler) {
    auto payload = postBuilder_->payloadWithOptions([&body](VLPayloadOptions& options) {
        options.body = std::move(body);
        options.includeBasicData = true;
        options.basicDataSeparator = 0;
    });
    urlSession_->POST(urlBuilder_->updateTagURL(), std::move(payload), false, errorOnly(std::move(completionHandler)));
}

void VLTagsService::deleteAllTagsWithCompletionHandler(ErrorHandler completionHandler) {
    logMessage(VLLogLevel::Debug, fmt::format("Tags: delete all tags for tracking ID {}", settings_->trackingId()));
    urlSession_->DELETE(urlBuilder_->deleteAllTagsURL(), errorOnly(std::move(completionHandler)));
}

std::string VLTagsService::tagTypeToString(VLTagType type) {
    switch (type) {
        case VLTagType::String:
            return "string";
        case VLTagType::Numeric:
            return "numeric";
        case VLTagType::Timestamp:
            return "timestamp";
    }
    throw NSException("Invalid Tag Type Exception",
                      fmt::format("An invalid VLTagType was provided to Vorlane.setTag(). Type was: {}",
                                  static_cast<std::uint64_t>(type)));
}

}  // namespace vorlane

#include "Tracking/VLEventService.h"

#include <utility>

#include "Core/Base/VLCompletion.h"
#include "Core/Base/VLSettings.h"
#include "Network/VLPayloadBuilder.h"
#include "Network/VLPayloadOptions.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"

namespace vorlane {

namespace {

std::optional<Value> labelObject(const std::optional<std::string>& label) {
    return label ? std::optional<Value>(*label) : std::nullopt;
}

Dictionary eventBody(const std::string& type, std::optional<Value> label, const std::optional<std::string>& phash) {
    Dictionary body;
    if (phash) body["phash"] = *phash;
    body["event_type"] = type;
    body["event_label"] = label ? std::move(*label) : Value("");
    return body;
}

}  // namespace

VLEventService::VLEventService(std::shared_ptr<VLSettings> settings, std::shared_ptr<VLURLBuilder> urlBuilder,
                               std::shared_ptr<VLPayloadBuilder> payloadBuilder,
                               std::shared_ptr<VLURLSession> urlSession)
    : settings_(std::move(settings)),
      urlBuilder_(std::move(urlBuilder)),
      payloadBuilder_(std::move(payloadBuilder)),
      urlSession_(std::move(urlSession)) {}

void VLEventService::registerEventWithType(const std::string& type, const std::optional<std::string>& label) {
    registerEventWithType(type, labelObject(label), std::nullopt, nullptr);
}

void VLEventService::registerEventWithType(const std::string& type, const std::optional<std::string>& label,
                                           const std::optional<std::string>& phash) {
    registerEventWithType(type, labelObject(label), phash, nullptr);
}

void VLEventService::registerEventWithType(const std::string& type, const Dictionary& data) {
    registerEventWithType(type, Value(data), std::nullopt, nullptr);
}

void VLEventService::registerEventWithType(const std::string& type, const Dictionary& data,
                                           const std::optional<std::string>& phash) {
    registerEventWithType(type, Value(data), phash, nullptr);
}

void VLEventService::registerEventWithType(const std::string& type, std::optional<Value> labelObject,
                                           const std::optional<std::string>& phash,
                                           CompletionHandler completionHandler) {
    auto payload = payloadBuilder_->payloadWithOptions([&](VLPayloadOptions& options) {
        options.body = eventBody(type, std::move(labelObject), phash);
        options.includeBasicData = true;
        options.basicDataSeparator = 1;
    });
    urlSession_->POST(urlBuilder_->registerEventURL(), std::move(payload), true,
                      [handler = std::move(completionHandler)](
                          const std::optional<std::string>& /*text*/, std::int64_t /*statusCode*/,
                          const std::optional<NSError>& error) { completeOnMainQueue(handler, error); });
}

}  // namespace vorlane

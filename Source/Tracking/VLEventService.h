#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/NSError.h"
#include "Public/VLValue.h"

namespace vorlane {

class VLPayloadBuilder;
class VLSettings;
class VLURLBuilder;
class VLURLSession;

/// Sends each event at once, in a request of its own. An event whose request fails is lost. Called by the facade. Any
/// thread.
class VLEventService {
public:
    using CompletionHandler = std::function<void(std::optional<NSError> error)>;

    /// `initWithSettings:urlBuilder:payloadBuilder:urlSession:`
    VLEventService(std::shared_ptr<VLSettings> settings, std::shared_ptr<VLURLBuilder> urlBuilder,
                   std::shared_ptr<VLPayloadBuilder> payloadBuilder, std::shared_ptr<VLURLSession> urlSession);

    /// `registerEventWithType:label:`
    void registerEventWithType(const std::string& type, const std::optional<std::string>& label);
    /// `registerEventWithType:label:phash:`
    void registerEventWithType(const std::string& type, const std::optional<std::string>& label,
                               const std::optional<std::string>& phash);
    /// `registerEventWithType:data:`
    void registerEventWithType(const std::string& type, const Dictionary& data);
    /// `registerEventWithType:data:phash:`
    void registerEventWithType(const std::string& type, const Dictionary& data,
                               const std::optional<std::string>& phash);

    /// `registerEventWithType:labelObject:phash:completionHandler:` sends an event. A label of `nullopt` is sent as "".
    /// A phash replaces the stored one; `nullopt` stands for the stored one. The handler may be empty. It runs on the
    /// main queue when the request has ended. Errors: those of the HTTP layer.
    void registerEventWithType(const std::string& type, std::optional<Value> labelObject,
                               const std::optional<std::string>& phash, CompletionHandler completionHandler);

private:
    // Fixed at construction.
    const std::shared_ptr<VLSettings> settings_;
    const std::shared_ptr<VLURLBuilder> urlBuilder_;
    const std::shared_ptr<VLPayloadBuilder> payloadBuilder_;
    const std::shared_ptr<VLURLSession> urlSession_;
};

}  // namespace vorlane

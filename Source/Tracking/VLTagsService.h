#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/NSError.h"
#include "Public/VLTagType.h"
#include "Public/VLValue.h"

namespace vorlane {

class VLPayloadBuilder;
class VLSettings;
class VLURLBuilder;
class VLURLSession;

/// Reads, sets and deletes the tags that the service keeps for the current user. Nothing is stored on the device.
/// Called by the facade. Any thread. Every handler may be empty. It runs once, on the main queue, after the call has
/// returned.
class VLTagsService {
public:
    using TagHandler = std::function<void(std::optional<std::string> value, std::optional<NSError> error)>;
    using ErrorHandler = std::function<void(std::optional<NSError> error)>;

    /// `initWithSettings:urlBuilder:postBuilder:urlSession:`
    VLTagsService(std::shared_ptr<VLSettings> settings, std::shared_ptr<VLURLBuilder> urlBuilder,
                  std::shared_ptr<VLPayloadBuilder> postBuilder, std::shared_ptr<VLURLSession> urlSession);

    /// `getTag:completionHandler:` reads one tag. The handler receives the value as a string, or an error, or neither
    /// if the answer has neither. Errors: `VLErrorDomainTag` code 0 for a name that is `nullopt` or empty, 1 for a
    /// tracking id that the service does not know, 2 for a tag that does not exist; those of the HTTP layer.
    void getTag(const std::optional<std::string>& name, TagHandler completionHandler);

    /// `setTag:value:type:completionHandler:` sets one tag. A value of `nullopt` is left out. Errors:
    /// `VLErrorDomainTag` code 0 for a name that is `nullopt` or empty; those of the HTTP layer. Throws an
    /// `NSException` named "Invalid Tag Type Exception".
    void setTag(const std::optional<std::string>& name, const std::optional<std::string>& value, VLTagType type,
                ErrorHandler completionHandler);

    /// `batchSetTags:completionHandler:` sends the collection as it is. Errors: those of the HTTP layer.
    void batchSetTags(const Value& tags, ErrorHandler completionHandler);

    /// `deleteAllTagsWithCompletionHandler:`. Errors: those of the HTTP layer.
    void deleteAllTagsWithCompletionHandler(ErrorHandler completionHandler);

    /// `tagTypeToString:` returns "string", "numeric" or "timestamp". Throws like `setTag()`.
    static std::string tagTypeToString(VLTagType type);

private:
    void postTags(Dictionary body, ErrorHandler completionHandler);

    // Fixed at construction.
    const std::shared_ptr<VLSettings> settings_;
    const std::shared_ptr<VLURLBuilder> urlBuilder_;
    const std::shared_ptr<VLPayloadBuilder> postBuilder_;
    const std::shared_ptr<VLURLSession> urlSession_;
};

}  // namespace vorlane

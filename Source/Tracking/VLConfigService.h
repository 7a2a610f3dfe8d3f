#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

class VLSettings;
class VLURLBuilder;
class VLURLSession;

/// The remote configuration: the features that the service has enabled for this application, and their parameters. It
/// is fetched once per start-up, kept in memory, and cached in "VLConfig.plist" for runs without a network.
///
/// Any thread. A reader sees the old or the new document, never a mixture. Every feature is off before the first load.
class VLConfigService : public std::enable_shared_from_this<VLConfigService> {
public:
    /// The source of the current configuration.
    enum class LoadStatus : std::int64_t { Fetched = 0, Cached = 1, Unavailable = 2 };
    using LoadHandler = std::function<void(LoadStatus status)>;

    /// `initWithSettings:urlBuilder:urlSession:`
    VLConfigService(std::shared_ptr<VLSettings> settings, std::shared_ptr<VLURLBuilder> urlBuilder,
                    std::shared_ptr<VLURLSession> urlSession);

    /// `loadConfigWithCompletion:` fetches the configuration, or reads the cached copy if that fails. The handler may
    /// be empty. It runs once, on the queue of the HTTP layer's handlers.
    void loadConfigWithCompletion(LoadHandler completionHandler);

    /// `serviceEnabled:` returns false for a service that the configuration does not name.
    bool serviceEnabled(const std::string& name) const;
    /// `serviceConfig:` returns the parameters of a service, or `nullopt` if the configuration has none.
    std::optional<Dictionary> serviceConfig(const std::string& name) const;

    /// `objectForService:andKey:withDefault:`
    Value objectForService(const std::string& name, const std::string& key, const Value& defaultValue) const;
    /// `numberForService:andKey:withDefault:` returns the default for a value that is not a number.
    Value numberForService(const std::string& name, const std::string& key, const Value& defaultNumber) const;
    /// `integerForService:andKey:withDefault:`
    std::int64_t integerForService(const std::string& name, const std::string& key, std::int64_t defaultInteger) const;

    /// The current document. Null before the first load, and after a load that found neither an answer nor a cached
    /// copy.
    std::shared_ptr<const Dictionary> configDictonary() const;

    /// `getFilePath` returns the full path of the cached copy.
    std::string getFilePath() const;

private:
    void configFetched(Dictionary config, const LoadHandler& completionHandler);
    void loadCachedConfig(const LoadHandler& completionHandler);
    void setConfigDictonary(std::shared_ptr<const Dictionary> config);

    // Fixed at construction.
    const std::shared_ptr<VLSettings> settings_;
    const std::shared_ptr<VLURLBuilder> urlBuilder_;
    const std::shared_ptr<VLURLSession> urlSession_;

    mutable std::mutex mutex_;
    // Guarded by mutex_, and replaced whole. Intended: the spelling.
    std::shared_ptr<const Dictionary> configDictonary_;
};

}  // namespace vorlane

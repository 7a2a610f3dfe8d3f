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

/// The remote configuration: which features the service has switched on for this application, and how they are tuned.
/// Fetched once per start-up, kept in memory, and cached in "VLConfig.plist" for runs without a network.
///
/// Any thread; a reader sees the old or the new document, never a mixture. Before the first load every service is off.
class VLConfigService : public std::enable_shared_from_this<VLConfigService> {
public:
    /// Where the configuration in force came from.
    enum class LoadStatus : std::int64_t { fetched = 0, cached = 1, unavailable = 2 };
    using LoadHandler = std::function<void(LoadStatus status)>;

    /// `initWithSettings:urlBuilder:urlSession:`
    VLConfigService(std::shared_ptr<VLSettings> settings, std::shared_ptr<VLURLBuilder> urlBuilder,
                    std::shared_ptr<VLURLSession> urlSession);

    /// `loadConfigWithCompletion:` fetches the configuration, and falls back to the cached copy when that fails. The
    /// handler runs once, on the queue on which the HTTP layer calls back; it may be empty.
    void loadConfigWithCompletion(LoadHandler completionHandler);

    /// `serviceEnabled:`; false for what the configuration does not tell.
    bool serviceEnabled(const std::string& name) const;
    /// `serviceConfig:` gives the service's own configuration; nothing when there is none.
    std::optional<Dictionary> serviceConfig(const std::string& name) const;

    /// `objectForService:andKey:withDefault:`
    Value objectForService(const std::string& name, const std::string& key, const Value& defaultValue) const;
    /// `numberForService:andKey:withDefault:`; a value that is no number is passed over in favour of the default.
    Value numberForService(const std::string& name, const std::string& key, const Value& defaultNumber) const;
    /// `integerForService:andKey:withDefault:`
    std::int64_t integerForService(const std::string& name, const std::string& key, std::int64_t defaultInteger) const;

    /// The document in force; null before the first load and after one that found nothing.
    std::shared_ptr<const Dictionary> configDictonary() const;

    /// `getFilePath` is the full path of the cached copy.
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
    // Guarded by mutex_, and replaced whole. Spelt so.
    std::shared_ptr<const Dictionary> configDictonary_;
};

}  // namespace vorlane

#include "Tracking/VLConfigService.h"

#include <cstddef>
#include <utility>

#include "Categories/NSDictionary+VLLookup.h"
#include "Core/Base/VLSettings.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Platform/Internal/DocumentLimits.h"
#include "Platform/Internal/PropertyListFile.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Platform/Platform.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

constexpr const char* kFileName = "VLConfig.plist";

/// The dictionary under `key`, or null. `config` may be null.
const Dictionary* sectionOf(const std::shared_ptr<const Dictionary>& config, const char* key) {
    return config ? dictionaryForKey(*config, key) : nullptr;
}

/// Counts the value and all that is in it, whose nesting the parser has limited.
std::size_t valueCountOf(const Value& value) {
    std::size_t count = 1;
    if (value.is_structured()) {
        for (const auto& element : value) count += valueCountOf(element);
    }
    return count;
}

bool isTooLarge(const Dictionary& config) {
    std::size_t count = 1;
    for (const auto& [key, value] : config) count += valueCountOf(value);
    return count > DocumentLimits::kMostValuesInConfiguration;
}

/// A document as the cache stores it, and as a later read of the cache returns it: without null, and without the few
/// characters that the file cannot hold. A launch without a network then uses the same document.
struct CachedDocument {
    explicit CachedDocument(Dictionary config) : root(std::move(config)) {
        vl_removeNulls(root);
        bytes = NSPropertyListSerialization::dataWithPropertyList(root);
        auto readBack = NSPropertyListSerialization::propertyListWithData(bytes);
        if (readBack && readBack->is_object()) root = std::move(*readBack);
    }

    Value root;
    Data bytes;
};

}  // namespace

VLConfigService::VLConfigService(std::shared_ptr<VLSettings> settings, std::shared_ptr<VLURLBuilder> urlBuilder,
                                 std::shared_ptr<VLURLSession> urlSession)
    : settings_(std::move(settings)), urlBuilder_(std::move(urlBuilder)), urlSession_(std::move(urlSession)) {}

void VLConfigService::loadConfigWithCompletion(LoadHandler completionHandler) {
    urlSession_->GETJSON(
        urlBuilder_->configURL(),
        [weakSelf = weak_from_this(), handler = std::move(completionHandler)](
            std::optional<Dictionary> config, std::int64_t /*statusCode*/, const std::optional<NSError>& error) {
            const auto self = weakSelf.lock();
            if (!self) {
                if (handler) handler(LoadStatus::Unavailable);
            } else if (config && !error && !isTooLarge(*config)) {
                self->configFetched(std::move(*config), handler);
            } else {
                self->loadCachedConfig(handler);
            }
        });
}

void VLConfigService::configFetched(Dictionary config, const LoadHandler& completionHandler) {
    CachedDocument document(std::move(config));
    setConfigDictonary(std::make_shared<const Dictionary>(std::move(document.root.get_ref<Dictionary&>())));
    PropertyListFile(getFilePath()).writeBytes(document.bytes);
    logMessage(VLLogLevel::Info, "Successfully loaded config from remote server");
    if (completionHandler) completionHandler(LoadStatus::Fetched);
}

void VLConfigService::loadCachedConfig(const LoadHandler& completionHandler) {
    auto cached = PropertyListFile(getFilePath()).read();
    if (cached.status != PropertyListFile::Status::Contents) {
        setConfigDictonary(nullptr);
        if (completionHandler) completionHandler(LoadStatus::Unavailable);
        logMessage(VLLogLevel::Error, "Failed to fetch config from remote server and no config is cached locally.");
        return;
    }
    const auto inForce = std::make_shared<const Dictionary>(std::move(cached.contents.get_ref<Dictionary&>()));
    setConfigDictonary(inForce);
    if (completionHandler) completionHandler(LoadStatus::Cached);
    logMessage(VLLogLevel::Info, "Couldn't fetch config from remote server, config loaded from local cache instead.");
    logMessage(VLLogLevel::Debug, "Cached config payload:", Value(*inForce));
}

bool VLConfigService::serviceEnabled(const std::string& name) const {
    const auto config = configDictonary();
    const auto* services = sectionOf(config, "services");
    return services && boolForKey(*services, name).value_or(false);
}

std::optional<Dictionary> VLConfigService::serviceConfig(const std::string& name) const {
    const auto config = configDictonary();
    const auto* configs = sectionOf(config, "configs");
    const auto* found = configs ? dictionaryForKey(*configs, name) : nullptr;
    if (!found) return std::nullopt;
    return *found;
}

Value VLConfigService::objectForService(const std::string& name, const std::string& key,
                                        const Value& defaultValue) const {
    const auto config = configDictonary();
    const auto* configs = sectionOf(config, "configs");
    const auto* service = configs ? dictionaryForKey(*configs, name) : nullptr;
    const auto* value = service ? valueForKey(*service, key) : nullptr;
    return value ? *value : defaultValue;
}

Value VLConfigService::numberForService(const std::string& name, const std::string& key,
                                        const Value& defaultNumber) const {
    const auto value = objectForService(name, key, defaultNumber);
    if (value.is_boolean()) return static_cast<std::int64_t>(value.get<bool>());
    return value.is_number() ? value : defaultNumber;
}

std::int64_t VLConfigService::integerForService(const std::string& name, const std::string& key,
                                                std::int64_t defaultInteger) const {
    return integerValue(numberForService(name, key, Value(defaultInteger))).value_or(defaultInteger);
}

std::shared_ptr<const Dictionary> VLConfigService::configDictonary() const {
    const std::lock_guard lock(mutex_);
    return configDictonary_;
}

void VLConfigService::setConfigDictonary(std::shared_ptr<const Dictionary> config) {
    const std::lock_guard lock(mutex_);
    configDictonary_.swap(config);
}

std::string VLConfigService::getFilePath() const { return Platform::current().documentsFolder() + "/" + kFileName; }

}  // namespace vorlane

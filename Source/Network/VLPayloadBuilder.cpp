#include "Network/VLPayloadBuilder.h"

#include <string>
#include <utility>

#include "Core/Base/VLSettings.h"
#include "Platform/UIDevice.h"

namespace vorlane {
namespace {

constexpr std::uint64_t kSnakeCaseSeparator = 1;

/// Null for an unknown number.
const char* deviceDataKeyName(std::uint64_t key) {
    switch (key) {
        case VLPayloadOptions::kDeviceKey:
            return "device";
        case VLPayloadOptions::kDeviceDataKey:
            return "deviceData";
        default:
            return nullptr;
    }
}

void setIfPresent(Dictionary& dictionary, const char* key, std::optional<std::string> value) {
    if (value) dictionary.emplace(key, std::move(*value));
}

}  // namespace

VLPayloadBuilder::VLPayloadBuilder(std::shared_ptr<UIDevice> device, std::shared_ptr<VLSettings> settings)
    : device_(std::move(device)), settings_(std::move(settings)) {}

Dictionary VLPayloadBuilder::payloadWithOptions(const Configuration& configure) const {
    VLPayloadOptions options;
    if (configure) configure(options);

    Dictionary common;
    if (options.includeBasicData) common = basicDataWithSeparator(options.basicDataSeparator);
    const char* deviceKey = deviceDataKeyName(options.deviceDataKey);
    if (options.includeDeviceData && deviceKey) common.emplace(deviceKey, Value(deviceData()));

    // Merging keeps existing fields, so the caller's fields win.
    Dictionary payload = std::move(options.body);
    payload.merge(common);
    return payload;
}

Dictionary VLPayloadBuilder::basicDataWithSeparator(std::uint64_t separator) const {
    const bool snakeCase = separator == kSnakeCaseSeparator;
    Dictionary basicData;
    basicData.emplace("lv", settings_->libraryVersion());
    basicData.emplace("acit", settings_->appCleanInstallTime());
    basicData.emplace("device_id", settings_->deviceId());
    basicData.emplace("sid", settings_->sessionId());
    setIfPresent(basicData, snakeCase ? "app_key" : "appkey", settings_->appKey());
    basicData.emplace(snakeCase ? "tracking_id" : "trackingid", settings_->trackingId());
    basicData.emplace("phash", settings_->phash().value_or(""));
    setIfPresent(basicData, "prev_tracking_id", settings_->prevTrackingId());
    return basicData;
}

Dictionary VLPayloadBuilder::deviceData() const {
    Dictionary deviceData;
    const auto languages = device_->preferredLanguages();
    if (!languages.empty()) deviceData.emplace("language", languages.front());
    deviceData.emplace("platform", "iOS");
    deviceData.emplace("os_name", device_->systemName());
    deviceData.emplace("os_version", device_->systemVersion());
    deviceData.emplace("manufacturer", "Apple");
    deviceData.emplace("type", settings_->deviceModel());
    deviceData.emplace("timezone", settings_->timezoneOffSetFromGMT());
    return deviceData;
}

}  // namespace vorlane

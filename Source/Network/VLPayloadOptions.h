#pragma once

#include <cstdint>

#include "Public/VLValue.h"

namespace vorlane {

/// The contents of a request's payload. Default options stand for an empty payload.
struct VLPayloadOptions {
    /// The caller's own fields. They replace basic and device fields of the same key.
    Dictionary body = {};
    /// Whether to add the basic fields, which identify the application, the user, the device and the session.
    bool includeBasicData = false;
    /// The spelling of two basic keys: 1 for "app_key" and "tracking_id", any other value for "appkey" and
    /// "trackingid".
    std::uint64_t basicDataSeparator = 0;
    /// Whether to add the device fields as a nested dictionary.
    bool includeDeviceData = false;
    /// The key of that dictionary: 0 for "device", 1 for "deviceData". With any other value it is not added.
    std::uint64_t deviceDataKey = 0;

    static constexpr std::uint64_t kDeviceKey = 0;
    static constexpr std::uint64_t kDeviceDataKey = 1;
};

}  // namespace vorlane

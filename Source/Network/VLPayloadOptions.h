#pragma once

#include <cstdint>

#include "Public/VLValue.h"

namespace vorlane {

/// What a request's payload is to hold. Fresh options ask for nothing.
struct VLPayloadOptions {
    /// The caller's own fields, added last: they replace a basic or device field of the same key.
    Dictionary body = {};
    /// Add the basic fields: who the application, the user, the device and the session are.
    bool includeBasicData = false;
    /// How two of the basic keys are spelt: 1 gives "app_key" and "tracking_id", any other value "appkey" and
    /// "trackingid".
    std::uint64_t basicDataSeparator = 0;
    /// Add the device fields as a nested dictionary.
    bool includeDeviceData = false;
    /// The key of that dictionary: 0 gives "device", 1 "deviceData"; any other value adds nothing.
    std::uint64_t deviceDataKey = 0;

    static constexpr std::uint64_t kDeviceKey = 0;
    static constexpr std::uint64_t kDeviceDataKey = 1;
};

}  // namespace vorlane

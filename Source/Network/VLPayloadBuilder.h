#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "Network/VLPayloadOptions.h"
#include "Public/VLValue.h"

namespace vorlane {

class UIDevice;
class VLSettings;

/// Builds the fields that most request bodies share. Each call reads the settings and the device anew. Any thread.
///
/// The key of an absent settings value is left out, except "phash", which is "" then.
class VLPayloadBuilder {
public:
    using Configuration = std::function<void(VLPayloadOptions& options)>;

    /// `initWithDevice:settings:`
    VLPayloadBuilder(std::shared_ptr<UIDevice> device, std::shared_ptr<VLSettings> settings);

    /// `payloadWithOptions:` calls `configure` with default options, within this call, and returns the payload for
    /// them.
    Dictionary payloadWithOptions(const Configuration& configure) const;

    /// `basicDataWithSeparator:` returns the basic fields. `separator` as in `VLPayloadOptions`.
    Dictionary basicDataWithSeparator(std::uint64_t separator) const;
    /// Returns the device fields.
    Dictionary deviceData() const;

private:
    // Fixed at construction.
    const std::shared_ptr<UIDevice> device_;
    const std::shared_ptr<VLSettings> settings_;
};

}  // namespace vorlane

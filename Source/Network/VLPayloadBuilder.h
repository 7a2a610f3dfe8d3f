#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "Network/VLPayloadOptions.h"
#include "Public/VLValue.h"

namespace vorlane {

class UIDevice;
class VLSettings;

/// Assembles the fields that most request bodies share, read afresh from the settings and the device at each call. Any
/// thread.
///
/// A settings value that is absent leaves its key out, but for "phash", which is then the empty text.
class VLPayloadBuilder {
public:
    using Configuration = std::function<void(VLPayloadOptions& options)>;

    /// `initWithDevice:settings:`
    VLPayloadBuilder(std::shared_ptr<UIDevice> device, std::shared_ptr<VLSettings> settings);

    /// `payloadWithOptions:` lets `configure` fill fresh options, within this call, and gives the payload that they ask
    /// for.
    Dictionary payloadWithOptions(const Configuration& configure) const;

    /// `basicDataWithSeparator:` gives the basic fields; `separator` as in VLPayloadOptions.
    Dictionary basicDataWithSeparator(std::uint64_t separator) const;
    /// The device fields.
    Dictionary deviceData() const;

private:
    // Fixed at construction.
    const std::shared_ptr<UIDevice> device_;
    const std::shared_ptr<VLSettings> settings_;
};

}  // namespace vorlane

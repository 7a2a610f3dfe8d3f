#pragma once

#include <cstdint>
#include <optional>

#include "Inbox/VLImageDecoder.h"

namespace vorlane {

/// Decodes JPEG with libturbojpeg. The memory is that of the coefficients, if there are several scans, and of every
/// eighth pixel.
class JPEGDecoder {
public:
    /// See `VLImageDecoder::describe()`.
    static std::optional<VLImageDecoder::Description> describe(const Data& data, std::uint64_t mostMemory);
};

}  // namespace vorlane

#pragma once

#include <cstdint>
#include <optional>

#include "Inbox/VLImageDecoder.h"

namespace vorlane {

/// Decodes PNG with libpng, which takes four bytes of memory a pixel.
class PNGDecoder {
public:
    /// See `VLImageDecoder::describe()`.
    static std::optional<VLImageDecoder::Description> describe(const Data& data, std::uint64_t mostMemory);
};

}  // namespace vorlane

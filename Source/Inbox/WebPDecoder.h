#pragma once

#include <cstdint>
#include <optional>

#include "Inbox/VLImageDecoder.h"

namespace vorlane {

/// Decodes WebP with libwebp. A lossless image takes four bytes of memory a pixel, a lossy one with transparency five.
class WebPDecoder {
public:
    /// See `VLImageDecoder::describe()`.
    static std::optional<VLImageDecoder::Description> describe(const Data& data, std::uint64_t mostMemory);
};

}  // namespace vorlane

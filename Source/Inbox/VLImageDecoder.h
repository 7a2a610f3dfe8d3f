#pragma once

#include <cstdint>
#include <optional>

#include "Public/VLValue.h"

namespace vorlane {

/// Finds out whether untrusted bytes are an image, by decoding all of it. Needs up to four bytes of memory a pixel
/// meanwhile. Any thread.
class VLImageDecoder {
public:
    struct Description {
        const char* mediaType;
        std::uint32_t width;
        std::uint32_t height;
    };

    /// More than a card can show, and little enough for a small device.
    static constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 24U;

    /// Nothing when the bytes are no PNG, JPEG or WebP image, when they are damaged or cut off, or when the image has
    /// more pixels than that.
    static std::optional<Description> describe(const Data& data);
};

}  // namespace vorlane

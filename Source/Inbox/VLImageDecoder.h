#pragma once

#include <cstdint>
#include <optional>

#include "Public/VLValue.h"

namespace vorlane {

/// Finds out whether untrusted bytes are an image, by decoding all of them. The libraries that decode are loaded when
/// the first image of their kind is checked; if one is missing, no bytes are an image of that kind. Any thread.
class VLImageDecoder {
public:
    struct Description {
        const char* mediaType;
        std::uint32_t width;
        std::uint32_t height;

        std::uint64_t pixels() const { return std::uint64_t{width} * height; }
        /// Returns whether the image has pixels, not too many, and takes no more memory than that while it is decoded.
        bool isWithin(std::uint64_t mostMemory, std::uint64_t neededMemory) const {
            return pixels() > 0 && pixels() <= kMostPixels && neededMemory <= mostMemory;
        }
    };

    /// More than a card can show.
    static constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 24U;
    /// Enough for that many pixels at four bytes each, and little enough for a small device.
    static constexpr std::uint64_t kMostMemory = 4 * kMostPixels;

    /// Returns `nullopt` if the bytes are not a whole and sound PNG, JPEG or WebP image, or if decoding needs more
    /// pixels or more memory than allowed.
    static std::optional<Description> describe(const Data& data, std::uint64_t mostMemory = kMostMemory);
};

}  // namespace vorlane

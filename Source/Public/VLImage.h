#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// An image as it came from the network: its bytes, known to decode, and its size in pixels. Immutable; any thread.
class VORLANE_EXPORT VLImage {
public:
    /// `imageWithData:` reads PNG, JPEG and WebP up to 16,777,216 pixels; null when the bytes do not decode as one of
    /// these without fault.
    static std::shared_ptr<const VLImage> imageWithData(Data data);

    /// The bytes of the file.
    const Data& data() const { return data_; }
    /// "image/png", "image/jpeg" or "image/webp".
    const std::string& mediaType() const { return mediaType_; }
    std::uint32_t width() const { return width_; }
    std::uint32_t height() const { return height_; }

private:
    VLImage(Data data, std::string mediaType, std::uint32_t width, std::uint32_t height);

    const Data data_;
    const std::string mediaType_;
    const std::uint32_t width_;
    const std::uint32_t height_;
};

}  // namespace vorlane

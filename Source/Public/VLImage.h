#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLTypes.h"

namespace vorlane {

/// An image: its bytes as they were downloaded, checked by decoding, and its size in pixels. Immutable; any thread.
class VORLANE_EXPORT VLImage {
public:
    /// `imageWithData:` accepts PNG, JPEG and WebP images with at most 16,777,216 pixels that decode without an error
    /// in 64 MiB of memory. Returns null for any other bytes.
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

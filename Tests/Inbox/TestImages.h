#pragma once

#include <png.h>
#include <turbojpeg.h>
#include <webp/encode.h>

#include <cstdint>

#include "Public/VLValue.h"

namespace vorlane {

/// Returns pixels of many colours, three bytes each.
inline Data testPixels(int width, int height) {
    Data pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<std::uint8_t>(i * 37 + i / 7);
    return pixels;
}

inline Data testPNG(int width, int height) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGB;
    const auto pixels = testPixels(width, height);
    png_alloc_size_t size = 0;
    png_image_write_to_memory(&image, nullptr, &size, 0, pixels.data(), 0, nullptr);
    Data data(size);
    png_image_write_to_memory(&image, data.data(), &size, 0, pixels.data(), 0, nullptr);
    data.resize(size);
    return data;
}

inline Data testJPEG(int width, int height, int format = TJPF_RGB, int flags = 0, int subsampling = TJSAMP_444) {
    auto pixels = testPixels(width, height);
    if (format == TJPF_CMYK) pixels.resize(pixels.size() / 3 * 4);
    auto* const compressor = tjInitCompress();
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    tjCompress2(compressor, pixels.data(), width, 0, height, format, &bytes, &size, subsampling, 80, flags);
    Data data(bytes, bytes + size);
    tjFree(bytes);
    tjDestroy(compressor);
    return data;
}

inline Data testWebP(int width, int height) {
    const auto pixels = testPixels(width, height);
    std::uint8_t* bytes = nullptr;
    const auto size = WebPEncodeRGB(pixels.data(), width, height, width * 3, 80, &bytes);
    Data data(bytes, bytes + size);
    WebPFree(bytes);
    return data;
}

inline Data testLosslessWebP(int width, int height) {
    const auto pixels = testPixels(width, height);
    std::uint8_t* bytes = nullptr;
    const auto size = WebPEncodeLosslessRGB(pixels.data(), width, height, width * 3, &bytes);
    Data data(bytes, bytes + size);
    WebPFree(bytes);
    return data;
}

}  // namespace vorlane

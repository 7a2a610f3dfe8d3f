#include "Inbox/VLImageDecoder.h"

#include <png.h>
#include <turbojpeg.h>
#include <webp/decode.h>

#include <memory>
#include <string_view>

namespace vorlane {

namespace {

using Description = VLImageDecoder::Description;

bool hasFittingSize(std::uint64_t width, std::uint64_t height) {
    return width > 0 && height > 0 && width * height <= VLImageDecoder::kMostPixels;
}

bool startsWith(const Data& data, std::string_view signature, std::size_t place = 0) {
    if (data.size() < place + signature.size()) return false;
    return std::string_view(static_cast<const char*>(static_cast<const void*>(data.data())) + place,
                            signature.size()) == signature;
}

/// libpng's state, freed on every way out.
struct PNGImage : png_image {
    PNGImage() : png_image() { version = PNG_IMAGE_VERSION; }
    ~PNGImage() { png_image_free(this); }
    PNGImage(const PNGImage&) = delete;
    PNGImage& operator=(const PNGImage&) = delete;
};

std::optional<Description> describePNG(const Data& data) {
    PNGImage image;
    if (png_image_begin_read_from_memory(&image, data.data(), data.size()) == 0) return std::nullopt;
    const Description description{"image/png", image.width, image.height};
    if (!hasFittingSize(description.width, description.height)) return std::nullopt;
    image.format = PNG_FORMAT_RGBA;
    Data pixels(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) == 0) return std::nullopt;
    return description;
}

std::optional<Description> describeJPEG(const Data& data) {
    const std::unique_ptr<void, int (*)(tjhandle)> decoder(tjInitDecompress(), tjDestroy);
    if (!decoder) return std::nullopt;
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colours = 0;
    if (tjDecompressHeader3(decoder.get(), data.data(), data.size(), &width, &height, &subsampling, &colours) != 0 ||
        width <= 0 || height <= 0) {
        return std::nullopt;
    }
    const Description description{"image/jpeg", static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    if (!hasFittingSize(description.width, description.height)) return std::nullopt;
    // All is read, but only every eighth pixel is made. CMYK has no path to grey.
    const bool isCMYK = colours == TJCS_CMYK || colours == TJCS_YCCK;
    const int format = isCMYK ? TJPF_CMYK : TJPF_GRAY;
    const int shownWidth = (width + 7) / 8;
    const int shownHeight = (height + 7) / 8;
    Data pixels(static_cast<std::size_t>(shownWidth) * static_cast<std::size_t>(shownHeight) *
                static_cast<std::size_t>(tjPixelSize[format]));
    // Many scans over few bytes would keep a processor busy for minutes.
    if (tjDecompress2(decoder.get(), data.data(), data.size(), pixels.data(), shownWidth, 0, shownHeight, format,
                      TJFLAG_LIMITSCANS) != 0) {
        return std::nullopt;
    }
    return description;
}

std::optional<Description> describeWebP(const Data& data) {
    int width = 0;
    int height = 0;
    if (WebPGetInfo(data.data(), data.size(), &width, &height) == 0 || width <= 0 || height <= 0) return std::nullopt;
    const Description description{"image/webp", static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
    if (!hasFittingSize(description.width, description.height)) return std::nullopt;
    const std::unique_ptr<std::uint8_t, void (*)(void*)> pixels(
        WebPDecodeRGB(data.data(), data.size(), &width, &height), WebPFree);
    if (!pixels) return std::nullopt;
    return description;
}

}  // namespace

std::optional<Description> VLImageDecoder::describe(const Data& data) {
    if (startsWith(data, "\x89PNG\r\n\x1A\n")) return describePNG(data);
    if (startsWith(data, "\xFF\xD8\xFF")) return describeJPEG(data);
    if (startsWith(data, "RIFF") && startsWith(data, "WEBP", 8)) return describeWebP(data);
    return std::nullopt;
}

}  // namespace vorlane

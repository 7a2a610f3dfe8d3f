#include "Inbox/PNGDecoder.h"

#include <png.h>

#include "Inbox/VLSharedLibrary.h"

namespace vorlane {

namespace {

/// The functions of the library, loaded when first used.
struct PNGFunctions {
    decltype(png_image_begin_read_from_memory)* begin = nullptr;
    decltype(png_image_finish_read)* finish = nullptr;
    decltype(png_image_free)* free = nullptr;
    bool areFound = false;

    static const PNGFunctions& shared() {
        static const PNGFunctions functions;
        return functions;
    }

private:
    PNGFunctions() {
        const VLSharedLibrary library("libpng16.so.16");
        areFound = library.isLoaded() && library.find("png_image_begin_read_from_memory", begin) &&
                   library.find("png_image_finish_read", finish) && library.find("png_image_free", free);
    }
};

/// libpng's state, freed with the object.
struct PNGImage : png_image {
    PNGImage() : png_image() { version = PNG_IMAGE_VERSION; }
    ~PNGImage() { PNGFunctions::shared().free(this); }
    PNGImage(const PNGImage&) = delete;
    PNGImage& operator=(const PNGImage&) = delete;
};

}  // namespace

std::optional<VLImageDecoder::Description> PNGDecoder::describe(const Data& data, std::uint64_t mostMemory) {
    constexpr std::uint64_t kBytesOfPixel = 4;
    if (!PNGFunctions::shared().areFound) return std::nullopt;
    PNGImage image;
    if (PNGFunctions::shared().begin(&image, data.data(), data.size()) == 0) return std::nullopt;
    const VLImageDecoder::Description description{"image/png", image.width, image.height};
    if (!description.isWithin(mostMemory, kBytesOfPixel * description.pixels())) return std::nullopt;
    image.format = PNG_FORMAT_RGBA;
    Data pixels(static_cast<std::size_t>(kBytesOfPixel * description.pixels()));
    if (PNGFunctions::shared().finish(&image, nullptr, pixels.data(), 0, nullptr) == 0) return std::nullopt;
    return description;
}

}  // namespace vorlane

#include "Inbox/WebPDecoder.h"

#include <webp/decode.h>

#include <algorithm>

#include "Inbox/VLSharedLibrary.h"

namespace vorlane {

namespace {

/// The functions of the library, loaded when first used.
struct WebPFunctions {
    decltype(WebPGetFeaturesInternal)* features = nullptr;
    decltype(WebPInitDecoderConfigInternal)* initConfig = nullptr;
    decltype(WebPDecode)* decode = nullptr;
    decltype(WebPFreeDecBuffer)* free = nullptr;
    bool areFound = false;

    static const WebPFunctions& shared() {
        static const WebPFunctions functions;
        return functions;
    }

private:
    WebPFunctions() {
        const VLSharedLibrary library("libwebp.so.7");
        areFound = library.isLoaded() && library.find("WebPGetFeaturesInternal", features) &&
                   library.find("WebPInitDecoderConfigInternal", initConfig) && library.find("WebPDecode", decode) &&
                   library.find("WebPFreeDecBuffer", free);
    }
};

std::uint64_t bytesOfWebPPixel(const WebPBitstreamFeatures& features) {
    constexpr int kLossy = 1;
    if (features.format != kLossy) return 4;
    return features.has_alpha ? 5 : 0;
}

/// Decodes the whole image, but keeps only every eighth pixel in each direction.
bool canDecodeWebP(const Data& data, int width, int height) {
    WebPDecoderConfig config;
    if (WebPFunctions::shared().initConfig(&config, WEBP_DECODER_ABI_VERSION) == 0) return false;
    config.options.use_scaling = 1;
    config.options.scaled_width = std::max(width / 8, 1);
    config.options.scaled_height = std::max(height / 8, 1);
    const bool isDecoded = WebPFunctions::shared().decode(data.data(), data.size(), &config) == VP8_STATUS_OK;
    WebPFunctions::shared().free(&config.output);
    return isDecoded;
}

}  // namespace

std::optional<VLImageDecoder::Description> WebPDecoder::describe(const Data& data, std::uint64_t mostMemory) {
    if (!WebPFunctions::shared().areFound) return std::nullopt;
    WebPBitstreamFeatures features;
    const auto status = WebPFunctions::shared().features(data.data(), data.size(), &features, WEBP_DECODER_ABI_VERSION);
    if (status != VP8_STATUS_OK || features.has_animation != 0 || features.width <= 0 || features.height <= 0) {
        return std::nullopt;
    }
    const VLImageDecoder::Description description{"image/webp", static_cast<std::uint32_t>(features.width),
                                                  static_cast<std::uint32_t>(features.height)};
    if (!description.isWithin(mostMemory, bytesOfWebPPixel(features) * description.pixels())) return std::nullopt;
    return canDecodeWebP(data, features.width, features.height) ? std::optional(description) : std::nullopt;
}

}  // namespace vorlane

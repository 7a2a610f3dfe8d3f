#include "Inbox/JPEGDecoder.h"

#include <turbojpeg.h>

#include <memory>

#include "Inbox/JPEGHeader.h"
#include "Inbox/VLSharedLibrary.h"

namespace vorlane {

namespace {

/// The functions of the library, loaded when first used.
struct JPEGFunctions {
    decltype(tjInitDecompress)* init = nullptr;
    decltype(tjDestroy)* destroy = nullptr;
    decltype(tjDecompressHeader3)* header = nullptr;
    decltype(tjDecompress2)* decompress = nullptr;
    bool areFound = false;

    static const JPEGFunctions& shared() {
        static const JPEGFunctions functions;
        return functions;
    }

private:
    JPEGFunctions() {
        const VLSharedLibrary library("libturbojpeg.so.0");
        areFound = library.isLoaded() && library.find("tjInitDecompress", init) && library.find("tjDestroy", destroy) &&
                   library.find("tjDecompressHeader3", header) && library.find("tjDecompress2", decompress);
    }
};

using JPEGHandle = std::unique_ptr<void, decltype(tjDestroy)*>;

/// Decodes the whole image, but computes only every eighth pixel in each direction.
bool canDecodeJPEG(const JPEGHandle& decoder, const Data& data, int width, int height, bool isCMYK) {
    // CMYK cannot be converted to grey.
    const int format = isCMYK ? TJPF_CMYK : TJPF_GRAY;
    const int shownWidth = (width + 7) / 8;
    const int shownHeight = (height + 7) / 8;
    Data pixels(static_cast<std::size_t>(shownWidth) * static_cast<std::size_t>(shownHeight) *
                static_cast<std::size_t>(tjPixelSize[format]));
    // The limit: many scans in a few bytes would keep a processor busy for minutes.
    return JPEGFunctions::shared().decompress(decoder.get(), data.data(), data.size(), pixels.data(), shownWidth, 0,
                                              shownHeight, format, TJFLAG_LIMITSCANS) == 0;
}

}  // namespace

std::optional<VLImageDecoder::Description> JPEGDecoder::describe(const Data& data, std::uint64_t mostMemory) {
    const auto markers = JPEGHeader::headerWithData(data);
    if (!markers || !JPEGFunctions::shared().areFound) return std::nullopt;
    const JPEGHandle decoder(JPEGFunctions::shared().init(), JPEGFunctions::shared().destroy);
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colors = 0;
    const bool isRead = decoder && JPEGFunctions::shared().header(decoder.get(), data.data(), data.size(), &width,
                                                                  &height, &subsampling, &colors) == 0;
    if (!isRead || width <= 0 || height <= 0) return std::nullopt;
    const VLImageDecoder::Description description{"image/jpeg", static_cast<std::uint32_t>(width),
                                                  static_cast<std::uint32_t>(height)};
    if (!description.isWithin(mostMemory, markers->coefficientBytes())) return std::nullopt;
    const bool isCMYK = colors == TJCS_CMYK || colors == TJCS_YCCK;
    return canDecodeJPEG(decoder, data, width, height, isCMYK) ? std::optional(description) : std::nullopt;
}

}  // namespace vorlane

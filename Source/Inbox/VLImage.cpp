#include "Public/VLImage.h"

#include <utility>

#include "Inbox/VLImageDecoder.h"

namespace vorlane {

VLImage::VLImage(Data data, std::string mediaType, std::uint32_t width, std::uint32_t height)
    : data_(std::move(data)), mediaType_(std::move(mediaType)), width_(width), height_(height) {}

std::shared_ptr<const VLImage> VLImage::imageWithData(Data data) {
    const auto description = VLImageDecoder::describe(data);
    if (!description) return nullptr;
    return std::shared_ptr<const VLImage>(
        new VLImage(std::move(data), description->mediaType, description->width, description->height));
}

}  // namespace vorlane

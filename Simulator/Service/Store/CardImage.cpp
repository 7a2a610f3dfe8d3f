#include "Simulator/Service/Store/CardImage.h"

#include <string_view>
#include <utility>

#include "Categories/NSString+VLHash.h"
#include "Simulator/Service/Http/MalformedRequest.h"

namespace vorlane::service {
namespace {

constexpr std::string_view kPNG = "\x89PNG\r\n\x1a\n";
constexpr std::string_view kJPEG = "\xff\xd8\xff";

}  // namespace

CardImage CardImage::fromBytes(std::string bytes) {
    const bool isPNG = bytes.starts_with(kPNG);
    if (!isPNG && !bytes.starts_with(kJPEG)) throw MalformedRequest("\"image\" is neither a PNG nor a JPEG");
    auto name = vl_md5(bytes) + (isPNG ? ".png" : ".jpg");
    return {std::move(name), isPNG ? "image/png" : "image/jpeg", std::move(bytes)};
}

}  // namespace vorlane::service

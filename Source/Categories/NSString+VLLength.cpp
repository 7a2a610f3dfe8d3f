#include "Categories/NSString+VLLength.h"

namespace vorlane {

std::size_t vl_length(std::string_view text) {
    std::size_t length = 0;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isContinuation = (byte & 0xC0U) == 0x80U;
        const bool startsSurrogatePair = byte >= 0xF0U;
        if (!isContinuation) length += startsSurrogatePair ? 2 : 1;
    }
    return length;
}

}  // namespace vorlane

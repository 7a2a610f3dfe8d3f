#include "Categories/NSString+VLUTF8.h"

#include <cstdint>
#include <cstring>

namespace vorlane {

namespace {

/// Returns the length of the first UTF-8 character; 0 if the bytes are not well-formed.
std::size_t characterLength(std::string_view text) {
    const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const auto lead = byte(0);
    if (lead < 0x80) return 1;
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || length > text.size()) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) return 0;
    }
    const bool isOverlong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
    const bool isSurrogateOrBeyond = (lead == 0xED && byte(1) >= 0xA0) || (lead == 0xF4 && byte(1) >= 0x90);
    return isOverlong || isSurrogateOrBeyond ? 0 : length;
}

/// Returns the number of leading ASCII bytes, in blocks of eight.
std::size_t lengthOfASCII(std::string_view text) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080U;
    std::size_t length = 0;
    for (std::uint64_t block = 0; length + sizeof block <= text.size(); length += sizeof block) {
        std::memcpy(&block, text.data() + length, sizeof block);
        if ((block & kHighBits) != 0) break;
    }
    return length;
}

}  // namespace

bool vl_isUTF8(std::string_view bytes) {
    while (!bytes.empty()) {
        bytes.remove_prefix(lengthOfASCII(bytes));
        if (bytes.empty()) break;
        const auto length = characterLength(bytes);
        if (length == 0) return false;
        bytes.remove_prefix(length);
    }
    return true;
}

std::optional<std::string> vl_stringWithUTF8Data(const Data& bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (!vl_isUTF8(text)) return std::nullopt;
    return std::string(text);
}

}  // namespace vorlane

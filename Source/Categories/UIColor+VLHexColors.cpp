#include "Categories/UIColor+VLHexColors.h"

#include <charconv>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace vorlane {

namespace {

constexpr std::size_t kLongForm = 7;   // "#rrggbb"
constexpr std::size_t kShortForm = 4;  // "#rgb"
constexpr float kLargest = 255.0F;

// Replaces each UTF-16 code unit of a character outside ASCII, so that places and lengths stay right.
constexpr char kOther = '?';

std::string asciiUnits(const std::string& text) {
    std::string units;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isContinuation = (byte & 0xC0U) == 0x80U;
        if (isContinuation) continue;
        units += byte < 0x80U ? character : kOther;
        if (byte >= 0xF0U) units += kOther;
    }
    return units;
}

/// In every build: a wrong length is a programming error.
[[noreturn]] void stopForLength() {
    std::fputs("Assertion failed: (7 == hexString.length || 4 == hexString.length), file UIColorVLHexColors\n", stderr);
    std::abort();
}

std::uint32_t valueAt(const std::string& hexString, std::size_t place) {
    return hexValueToUnsigned(hexString.substr(place, 2));
}

}  // namespace

UIColor vl_colorWithHexString(const std::string& hexString, float alpha) {
    auto text = asciiUnits(hexString);
    if (!text.starts_with('#')) text.insert(text.begin(), '#');
    if (text.size() != kLongForm && text.size() != kShortForm) stopForLength();
    text = hexStringTransformFromThreeCharacters(text);
    return colorWith8BitRed(valueAt(text, 1), valueAt(text, 3), valueAt(text, 5), alpha);
}

UIColor vl_colorWithHexString(const std::string& hexString) { return vl_colorWithHexString(hexString, 1.0F); }

UIColor colorWith8BitRed(std::uint32_t red, std::uint32_t green, std::uint32_t blue, float alpha) {
    return {static_cast<float>(red) / kLargest, static_cast<float>(green) / kLargest,
            static_cast<float>(blue) / kLargest, alpha};
}

std::string hexStringTransformFromThreeCharacters(const std::string& hexString) {
    if (hexString.size() != kShortForm) return hexString;
    std::string transformed = "#";
    for (const char digit : std::string_view(hexString).substr(1)) transformed.append(2, digit);
    return transformed;
}

std::uint32_t hexValueToUnsigned(const std::string& hexValue) {
    std::uint32_t value = 0;
    std::from_chars(hexValue.data(), hexValue.data() + hexValue.size(), value, 16);
    return value;
}

}  // namespace vorlane

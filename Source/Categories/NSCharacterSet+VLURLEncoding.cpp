#include "Categories/NSCharacterSet+VLURLEncoding.h"

#include <string_view>

#include "Categories/NSString+VLUTF8.h"

namespace vorlane {

namespace {

constexpr std::string_view kLettersAndDigits = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

NSCharacterSet setOf(std::string_view others) {
    NSCharacterSet set;
    for (const auto characters : {kLettersAndDigits, others}) {
        for (const char character : characters) set.set(static_cast<unsigned char>(character));
    }
    return set;
}

/// The value of a hexadecimal digit; -1 for any other character.
int hexadecimalValue(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

}  // namespace

const NSCharacterSet& vl_URIComponentAllowedCharacterSet() {
    static const NSCharacterSet set = setOf("-_.!~*'()");
    return set;
}

const NSCharacterSet& vl_formURLEncodingAllowedCharacterSet() {
    static const NSCharacterSet set = setOf("-_.*");
    return set;
}

const NSCharacterSet& alphanumericCharacterSet() {
    static const NSCharacterSet set = setOf("");
    return set;
}

std::string stringByAddingPercentEncoding(const std::string& text, const NSCharacterSet& allowed) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string result;
    result.reserve(text.size() * 2);
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (allowed[byte]) {
            result += character;
        } else {
            const char encoded[] = {'%', kDigits[byte >> 4U], kDigits[byte & 0xFU]};
            result.append(encoded, sizeof encoded);
        }
    }
    return result;
}

std::optional<std::string> stringByRemovingPercentEncoding(const std::string& text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
            continue;
        }
        const int high = i + 1 < text.size() ? hexadecimalValue(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? hexadecimalValue(text[i + 2]) : -1;
        if (high < 0 || low < 0) return std::nullopt;
        result += static_cast<char>(high * 16 + low);
        i += 2;
    }
    if (!vl_isUTF8(result)) return std::nullopt;
    return result;
}

}  // namespace vorlane

#include "Categories/NSCharacterSet+VLURLEncoding.h"

#include <string_view>

#include "Categories/NSString+VLUTF8.h"

namespace vorlane {

namespace {

constexpr std::string_view kLettersAndDigits = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

NSCharacterSet lettersDigitsAnd(std::string_view others) {
    NSCharacterSet set;
    for (const auto characters : {kLettersAndDigits, others}) {
        for (const char character : characters) set.set(static_cast<unsigned char>(character));
    }
    return set;
}

/// Returns -1 for a character that is no hexadecimal digit.
int hexadecimalValue(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

}  // namespace

const NSCharacterSet& vl_URIComponentAllowedCharacterSet() {
    static const NSCharacterSet set = lettersDigitsAnd("-_.!~*'()");
    return set;
}

const NSCharacterSet& vl_formURLEncodingAllowedCharacterSet() {
    static const NSCharacterSet set = lettersDigitsAnd("-_.*");
    return set;
}

const NSCharacterSet& alphanumericCharacterSet() {
    static const NSCharacterSet set = lettersDigitsAnd("");
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
    std::size_t done = 0;
    for (auto sign = text.find('%'); sign != std::string::npos; sign = text.find('%', done)) {
        const int high = sign + 1 < text.size() ? hexadecimalValue(text[sign + 1]) : -1;
        const int low = sign + 2 < text.size() ? hexadecimalValue(text[sign + 2]) : -1;
        if (high < 0 || low < 0) return std::nullopt;
        result.append(text, done, sign - done);
        result += static_cast<char>(high * 16 + low);
        done = sign + 3;
    }
    result.append(text, done);
    if (!vl_isUTF8(result)) return std::nullopt;
    return result;
}

}  // namespace vorlane

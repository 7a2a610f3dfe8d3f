#include "Simulator/Platform/Internal/PercentEncoding.h"

#include <cstddef>

namespace vorlane {

namespace {

constexpr std::string_view kHexadecimalDigits = "0123456789ABCDEFabcdef";
constexpr std::string_view kUnreserved = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";

int hexadecimalValue(char character) {
    const auto place = kHexadecimalDigits.find(character);
    if (place == std::string_view::npos) return 0;
    return static_cast<int>(place < 16 ? place : place - 6);
}

}  // namespace

std::string percentEncoded(std::string_view plain) {
    std::string result;
    for (const char character : plain) {
        if (kUnreserved.find(character) != std::string_view::npos) {
            result += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            result += '%';
            result += kHexadecimalDigits[byte / 16];
            result += kHexadecimalDigits[byte % 16];
        }
    }
    return result;
}

std::string percentDecoded(std::string_view encoded) {
    std::string result;
    for (std::size_t i = 0; i < encoded.size(); ++i) {
        if (encoded[i] == '%' && i + 2 < encoded.size()) {
            result += static_cast<char>(hexadecimalValue(encoded[i + 1]) * 16 + hexadecimalValue(encoded[i + 2]));
            i += 2;
        } else {
            result += encoded[i];
        }
    }
    return result;
}

}  // namespace vorlane

#include "Platform/Internal/ASCIICase.h"

#include <algorithm>

namespace vorlane {

namespace {

constexpr char kCaseBit = 'a' - 'A';

}  // namespace

char inLowercase(char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + kCaseBit) : letter; }

char inCapitals(char letter) { return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - kCaseBit) : letter; }

std::string lowercased(std::string text) {
    std::ranges::transform(text, text.begin(), inLowercase);
    return text;
}

std::string capitalised(std::string text) {
    std::ranges::transform(text, text.begin(), inCapitals);
    return text;
}

bool isEqualIgnoringCase(std::string_view text, std::string_view other) {
    return std::ranges::equal(text, other, {}, inLowercase, inLowercase);
}

}  // namespace vorlane

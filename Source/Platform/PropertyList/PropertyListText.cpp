#include "Platform/PropertyList/PropertyListText.h"

#include <algorithm>
#include <cstddef>

namespace vorlane {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

std::size_t lengthByLead(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xC2) return 0;
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    return lead < 0xF5 ? 4 : 0;
}

/// The length of the UTF-8 character at the front; 0 if the bytes there are none.
std::size_t characterLength(std::string_view text) {
    const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const auto lead = byte(0);
    const auto length = lengthByLead(lead);
    if (length > text.size()) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) return 0;
    }
    const bool isOverlong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
    const bool isOutside = (lead == 0xED && byte(1) >= 0xA0) || (lead == 0xF4 && byte(1) >= 0x90);
    return isOverlong || isOutside ? 0 : length;
}

/// The number of printable ASCII characters at the front.
std::size_t plainLength(std::string_view text) {
    const auto* const end =
        std::ranges::find_if(text, [](char character) { return character < 0x20 || character == 0x7F; });
    return static_cast<std::size_t>(end - text.begin());
}

bool isAny(std::string_view /*character*/) { return true; }

/// Whether XML 1.0 can hold the well-formed character.
bool isXMLCharacter(std::string_view character) {
    if (character.size() > 1) return character != "\xEF\xBF\xBE" && character != "\xEF\xBF\xBF";
    const auto byte = static_cast<unsigned char>(character[0]);
    return byte >= 0x20 || byte == '\t' || byte == '\n' || byte == '\r';
}

std::string repaired(std::string_view text, bool (*isAllowed)(std::string_view character)) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const auto plain = plainLength(text);
        result += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) break;
        const auto length = characterLength(text);
        const auto character = text.substr(0, length == 0 ? 1 : length);
        result += length != 0 && isAllowed(character) ? character : kReplacement;
        text.remove_prefix(character.size());
    }
    return result;
}

}  // namespace

bool PropertyListText::isPlain(std::string_view text) { return plainLength(text) == text.size(); }

std::string PropertyListText::wellFormed(std::string_view text) { return repaired(text, isAny); }

std::string PropertyListText::fitForXML(std::string_view text) { return repaired(text, isXMLCharacter); }

}  // namespace vorlane

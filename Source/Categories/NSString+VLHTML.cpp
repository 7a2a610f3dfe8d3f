#include "Categories/NSString+VLHTML.h"

#include <algorithm>
#include <optional>

#include "Categories/HTMLEntities.h"
#include "Public/VLConstants.h"

namespace vorlane {

namespace {

constexpr char32_t kLastCharacter = 0x10FFFF;

/// The character of a reference, and the length of the reference with its "&" and ";".
struct Reference {
    char32_t character;
    std::size_t length;
};

constexpr std::size_t longestName() {
    std::size_t longest = 0;
    for (const auto& entity : kHTMLEntities) longest = std::max(longest, entity.name.size());
    return longest;
}

constexpr std::size_t kLongestName = longestName();

bool isCharacter(char32_t value) {
    const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
    return value > 0 && value <= kLastCharacter && !isSurrogate;
}

/// Returns 16 for a character that is no hexadecimal digit.
char32_t digitValue(char digit) {
    if (digit >= '0' && digit <= '9') return static_cast<char32_t>(digit - '0');
    if (digit >= 'a' && digit <= 'f') return static_cast<char32_t>(digit - 'a' + 10);
    if (digit >= 'A' && digit <= 'F') return static_cast<char32_t>(digit - 'A' + 10);
    return 16;
}

/// `text` starts with "&#".
std::optional<Reference> numericReference(std::string_view text) {
    std::size_t place = 2;
    char32_t base = 10;
    if (place < text.size() && (text[place] == 'x' || text[place] == 'X')) {
        base = 16;
        ++place;
    }
    const std::size_t firstDigit = place;
    char32_t value = 0;
    for (; place < text.size() && digitValue(text[place]) < base; ++place) {
        value = std::min(value * base + digitValue(text[place]), kLastCharacter + 1);
    }
    const bool isWhole = place > firstDigit && place < text.size() && text[place] == ';';
    if (!isWhole || !isCharacter(value)) return std::nullopt;
    return Reference{value, place + 1};
}

/// `text` starts with "&".
std::optional<Reference> namedReference(std::string_view text) {
    const auto end = text.substr(0, kLongestName + 2).find(';');
    if (end == std::string_view::npos) return std::nullopt;
    const auto name = text.substr(1, end - 1);
    const auto* const entity = std::ranges::lower_bound(kHTMLEntities, name, {}, &HTMLEntity::name);
    if (entity == kHTMLEntities.end() || entity->name != name) return std::nullopt;
    return Reference{entity->character, end + 1};
}

void appendUTF8(std::string& text, char32_t character) {
    const auto append = [&text](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (character < 0x80) return append(character);
    if (character < 0x800) {
        append(0xC0 | (character >> 6U));
    } else if (character < 0x10000) {
        append(0xE0 | (character >> 12U));
        append(0x80 | ((character >> 6U) & 0x3FU));
    } else {
        append(0xF0 | (character >> 18U));
        append(0x80 | ((character >> 12U) & 0x3FU));
        append(0x80 | ((character >> 6U) & 0x3FU));
    }
    append(0x80 | (character & 0x3FU));
}

}  // namespace

std::string vl_unescapeHTML(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const auto plain = std::min(text.find('&'), text.size());
        result.append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty()) break;
        const auto reference = text.starts_with("&#") ? numericReference(text) : namedReference(text);
        if (reference) {
            appendUTF8(result, reference->character);
        } else {
            result += '&';
        }
        text.remove_prefix(reference ? reference->length : 1);
    }
    return result;
}

std::string vl_prependHTMLStringWithViewportMetaTag(std::string_view text) {
    std::string page(VIEWPORT_META_TAG);
    page.reserve(page.size() + text.size());
    page.append(text);
    return page;
}

}  // namespace vorlane

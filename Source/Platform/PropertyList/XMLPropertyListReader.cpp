#include "Platform/PropertyList/XMLPropertyListReader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <system_error>
#include <utility>

#include "Platform/Internal/DocumentLimits.h"
#include "Platform/PropertyList/PropertyListText.h"

namespace vorlane {

namespace {

constexpr auto kNowhere = std::string_view::npos;
constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(kBlanks);
    if (first == kNowhere) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Reads all of the text as a number; the sign "+" is allowed.
template <class Number, class... Format>
bool readNumber(std::string_view text, Number& number, Format... format) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return false;
    }
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number, format...);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

std::optional<Value> integerIn(std::string_view text) {
    std::int64_t number = 0;
    if (readNumber(text, number)) return number;
    std::uint64_t large = 0;
    if (readNumber(text, large)) return large;
    return std::nullopt;
}

/// Whether the text has the form of the pattern, in which "0" stands for a digit.
bool hasForm(std::string_view text, std::string_view pattern) {
    return std::ranges::equal(text, pattern, [](char character, char expected) {
        return expected == '0' ? character >= '0' && character <= '9' : character == expected;
    });
}

/// "2023-11-14T22:13:20Z" as seconds since 1970.
std::optional<Value> dateIn(std::string_view text) {
    if (!hasForm(text, "0000-00-00T00:00:00Z")) return std::nullopt;
    const auto part = [text](std::size_t start, std::size_t length) {
        int number = 0;
        readNumber(text.substr(start, length), number);
        return number;
    };
    const std::chrono::year_month_day day(std::chrono::year(part(0, 4)),
                                          std::chrono::month(static_cast<unsigned>(part(5, 2))),
                                          std::chrono::day(static_cast<unsigned>(part(8, 2))));
    const int hour = part(11, 2);
    const int minute = part(14, 2);
    const int second = part(17, 2);
    if (!day.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
    const auto days = std::chrono::sys_days(day).time_since_epoch().count();
    return static_cast<double>(days) * 86400.0 + hour * 3600.0 + minute * 60.0 + second;
}

/// The six bits that a letter of base 64 stands for; -1 for any other character.
int sixBits(char letter) {
    if (letter >= 'A' && letter <= 'Z') return letter - 'A';
    if (letter >= 'a' && letter <= 'z') return letter - 'a' + 26;
    if (letter >= '0' && letter <= '9') return letter - '0' + 52;
    if (letter == '+') return 62;
    return letter == '/' ? 63 : -1;
}

std::optional<Value> dataIn(std::string_view text) {
    Data bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    std::size_t letters = 0;
    std::size_t padding = 0;
    for (const char letter : text) {
        if (kBlanks.find(letter) != kNowhere) continue;
        if (letter == '=') {
            ++padding;
            continue;
        }
        const int value = sixBits(letter);
        if (value < 0 || padding > 0) return std::nullopt;
        bits = (bits << 6U) | static_cast<std::uint32_t>(value);
        if (++letters % 4 == 0) {
            for (const unsigned shift : {16U, 8U, 0U}) bytes.push_back(static_cast<std::uint8_t>(bits >> shift));
        }
    }
    if (padding > 2 || (letters + padding) % 4 != 0) return std::nullopt;
    if (letters % 4 >= 2) bytes.push_back(static_cast<std::uint8_t>(letters % 4 == 2 ? bits >> 4U : bits >> 10U));
    if (letters % 4 == 3) bytes.push_back(static_cast<std::uint8_t>(bits >> 2U));
    return Value::binary(std::move(bytes));
}

void appendCharacter(std::uint32_t code, std::string& text) {
    const auto add = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (code < 0x80) return add(code);
    if (code < 0x800) {
        add(0xC0U | code >> 6U);
    } else {
        if (code < 0x10000) {
            add(0xE0U | code >> 12U);
        } else {
            add(0xF0U | code >> 18U);
            add(0x80U | (code >> 12U & 0x3FU));
        }
        add(0x80U | (code >> 6U & 0x3FU));
    }
    add(0x80U | (code & 0x3FU));
}

/// "#233" or "#xE9".
bool appendReference(std::string_view reference, std::string& text) {
    reference.remove_prefix(1);
    const bool isHexadecimal = reference.starts_with('x');
    if (isHexadecimal) reference.remove_prefix(1);
    std::uint32_t code = 0;
    if (reference.starts_with('+') || !readNumber(reference, code, isHexadecimal ? 16 : 10)) return false;
    if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
    appendCharacter(code, text);
    return true;
}

/// Without "&" and ";".
bool appendEntity(std::string_view name, std::string& text) {
    constexpr std::array<std::pair<std::string_view, char>, 5> kNamed{
        {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}}};
    if (name.starts_with('#')) return appendReference(name, text);
    const auto* const found = std::ranges::find(kNamed, name, &std::pair<std::string_view, char>::first);
    if (found == kNamed.end()) return false;
    text += found->second;
    return true;
}

std::string asWellFormed(std::string text) {
    return PropertyListText::isPlain(text) ? std::move(text) : PropertyListText::wellFormed(text);
}

bool isContainer(std::string_view name) { return name == "dict" || name == "array"; }

}  // namespace

std::optional<Value> XMLPropertyListReader::read(std::string_view xml) {
    // XML has no place for a NUL byte; a file that a power cut left incomplete may be full of them.
    if (xml.find('\0') != kNowhere) return std::nullopt;
    if (xml.starts_with(kByteOrderMark)) xml.remove_prefix(kByteOrderMark.size());
    return XMLPropertyListReader(xml).readDocument();
}

std::optional<Value> XMLPropertyListReader::readDocument() {
    if (!skipBlanks()) return std::nullopt;
    const auto first = readTag();
    if (!first || first->name != "plist" || first->isClosing || first->isEmpty) return std::nullopt;
    while (true) {
        if (!skipBlanks()) return std::nullopt;
        if (open_.empty() && rest_.starts_with("</")) break;
        if (!readElement()) return std::nullopt;
    }
    const auto last = readTag();
    if (!last || last->name != "plist" || !skipBlanks() || !rest_.empty()) return std::nullopt;
    return std::move(root_);
}

/// One tag, with the text and the end of a value that is no container.
bool XMLPropertyListReader::readElement() {
    const auto tag = readTag();
    if (!tag) return false;
    if (tag->isClosing) return close(tag->name);
    if (isContainer(tag->name)) return open(*tag);
    auto text = tag->isEmpty ? std::optional<std::string>(std::in_place) : readText(tag->name);
    return text && addLeaf(tag->name, std::move(*text));
}

bool XMLPropertyListReader::open(const Tag& tag) {
    if (open_.size() >= static_cast<std::size_t>(DocumentLimits::kDeepestNesting)) return false;
    if (open_.empty() && hasRoot_) return false;
    Value value = tag.name == "dict" ? Value::object() : Value::array();
    if (tag.isEmpty) return add(std::move(value));
    if (!open_.empty() && open_.back().value.is_object() && !open_.back().key) return false;
    open_.push_back({std::move(value), std::nullopt});
    return true;
}

bool XMLPropertyListReader::close(std::string_view name) {
    if (open_.empty() || open_.back().key) return false;
    Value value = std::move(open_.back().value);
    if (name != (value.is_object() ? "dict" : "array")) return false;
    open_.pop_back();
    return add(std::move(value));
}

/// Adds a value, or in the place of `nullopt` none, to the innermost container.
bool XMLPropertyListReader::add(std::optional<Value> value) {
    if (++valueCount_ > DocumentLimits::kMostValuesInPropertyList) return false;
    if (open_.empty()) {
        root_ = std::move(value);
        return !std::exchange(hasRoot_, true);
    }
    auto& [container, key] = open_.back();
    if (container.is_array()) {
        if (value) container.get_ref<Array&>().push_back(std::move(*value));
        return true;
    }
    if (!key) return false;
    if (value) {
        auto& dictionary = container.get_ref<Dictionary&>();
        // Lists are mostly sorted, so that the place is known.
        if (dictionary.empty() || dictionary.rbegin()->first < *key) {
            dictionary.emplace_hint(dictionary.end(), std::move(*key), std::move(*value));
        } else {
            dictionary.insert_or_assign(std::move(*key), std::move(*value));
        }
    }
    key.reset();
    return true;
}

bool XMLPropertyListReader::addLeaf(std::string_view name, std::string text) {
    if (name == "key") {
        if (open_.empty() || !open_.back().value.is_object() || open_.back().key) return false;
        open_.back().key = asWellFormed(std::move(text));
        return true;
    }
    if (name == "string") return add(Value(asWellFormed(std::move(text))));
    if (name == "true" || name == "false") return text.empty() && add(Value(name == "true"));
    if (name == "real") {
        double number = 0;
        if (!readNumber(trimmed(text), number)) return false;
        return add(std::isfinite(number) ? std::optional<Value>(number) : std::nullopt);
    }
    std::optional<Value> value;
    if (name == "integer") value = integerIn(trimmed(text));
    if (name == "date") value = dateIn(trimmed(text));
    if (name == "data") value = dataIn(text);
    return value && add(std::move(value));
}

/// Moves to the next tag. False if there is anything but blanks and comments before it.
bool XMLPropertyListReader::skipBlanks() {
    while (true) {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
        if (rest_.empty()) return true;
        if (!rest_.starts_with('<')) return false;
        if (!rest_.starts_with("<!") && !rest_.starts_with("<?")) return true;
        if (!skipMarkup()) return false;
    }
}

/// A comment, a processing instruction or a document type.
bool XMLPropertyListReader::skipMarkup() {
    std::size_t end = kNowhere;
    if (rest_.starts_with("<!--")) {
        end = rest_.find("-->", 4);
        if (end != kNowhere) end += 2;
    } else if (rest_.starts_with("<?")) {
        end = rest_.find("?>", 2);
        if (end != kNowhere) ++end;
    } else if (rest_.starts_with("<!DOCTYPE")) {
        // A document's own declarations ("[") are no part of property lists.
        end = rest_.find_first_of("<>[", 1);
        if (end != kNowhere && rest_[end] != '>') end = kNowhere;
    }
    if (end == kNowhere) return false;
    rest_.remove_prefix(end + 1);
    return true;
}

/// Attributes are passed over. Quotation marks that are left open and "<" in a tag are refused.
std::optional<XMLPropertyListReader::Tag> XMLPropertyListReader::readTag() {
    if (!rest_.starts_with('<')) return std::nullopt;
    const auto end = rest_.find_first_of("<>", 1);
    if (end == kNowhere || rest_[end] == '<') return std::nullopt;
    auto inside = rest_.substr(1, end - 1);
    if (std::ranges::count(inside, '"') % 2 != 0) return std::nullopt;
    rest_.remove_prefix(end + 1);
    Tag tag;
    if (inside.starts_with('/')) {
        tag.isClosing = true;
        inside.remove_prefix(1);
    }
    if (inside.ends_with('/')) {
        tag.isEmpty = true;
        inside.remove_suffix(1);
    }
    if (tag.isClosing && tag.isEmpty) return std::nullopt;
    tag.name = inside.substr(0, inside.find_first_of(kBlanks));
    return tag;
}

/// The text up to the end of the element of that name; comments in it are left out.
std::optional<std::string> XMLPropertyListReader::readText(std::string_view name) {
    constexpr std::string_view kRawStart = "<![CDATA[";
    constexpr std::string_view kRawEnd = "]]>";
    std::string text;
    while (true) {
        const auto end = rest_.find('<');
        if (end == kNowhere || !appendText(rest_.substr(0, end), text)) return std::nullopt;
        rest_.remove_prefix(end);
        if (rest_.starts_with(kRawStart)) {
            const auto rawEnd = rest_.find(kRawEnd);
            if (rawEnd == kNowhere) return std::nullopt;
            text += rest_.substr(kRawStart.size(), rawEnd - kRawStart.size());
            rest_.remove_prefix(rawEnd + kRawEnd.size());
        } else if (rest_.starts_with("<!--")) {
            if (!skipMarkup()) return std::nullopt;
        } else {
            const auto tag = readTag();
            if (!tag || !tag->isClosing || tag->name != name) return std::nullopt;
            return text;
        }
    }
}

bool XMLPropertyListReader::appendText(std::string_view text, std::string& result) const {
    while (true) {
        const auto entity = text.find('&');
        result += text.substr(0, entity);
        if (entity == kNowhere) return true;
        text.remove_prefix(entity + 1);
        // No entity is longer: a text full of "&" costs no second pass.
        constexpr std::size_t kLongestEntity = 16;
        const auto end = text.substr(0, kLongestEntity).find(';');
        if (end == kNowhere || !appendEntity(text.substr(0, end), result)) return false;
        text.remove_prefix(end + 1);
    }
}

}  // namespace vorlane

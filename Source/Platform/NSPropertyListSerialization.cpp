#include "Platform/NSPropertyListSerialization.h"

#include <plist/plist.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include "Platform/NSFileManager.h"

namespace vorlane {

namespace {

constexpr int kDeepestNesting = 512;
constexpr double kSecondsFrom1970To2001 = 978307200.0;
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

using Node = std::unique_ptr<void, decltype(&plist_free)>;

// Reading.

bool isBinary(const Data& bytes) {
    constexpr std::string_view kMagic = "bplist";
    return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()).starts_with(kMagic);
}

/// Whether elements of an XML list nest no deeper than the limit, told from its tags alone: libplist frees what it read
/// by recursion, so what is deeper must not reach it.
bool nestsWithinLimit(std::string_view xml) {
    int depth = 0;
    for (auto open = xml.find('<'); open != std::string_view::npos; open = xml.find('<', open + 1)) {
        const auto tag = xml.substr(open + 1, 6);
        if (tag.starts_with("dict") || tag.starts_with("array")) {
            if (++depth > kDeepestNesting) return false;
        } else if (tag.starts_with("/dict") || tag.starts_with("/array")) {
            --depth;
        }
    }
    return true;
}

std::optional<Value> valueOf(plist_t node, int depth);

std::string textOf(plist_t node, void (*get)(plist_t, char**)) {
    char* text = nullptr;
    get(node, &text);
    std::string result = text ? text : "";
    std::free(text);
    return result;
}

Value numberOf(plist_t node) {
    std::uint64_t number = 0;
    plist_get_uint_val(node, &number);
    // libplist keeps the bits of a negative number and does not tell it apart.
    return static_cast<std::int64_t>(number);
}

Value dataOf(plist_t node) {
    char* bytes = nullptr;
    std::uint64_t length = 0;
    plist_get_data_val(node, &bytes, &length);
    Data data;
    if (bytes) data.assign(bytes, bytes + length);
    std::free(bytes);
    return Value::binary(std::move(data));
}

Value dateOf(plist_t node) {
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    return kSecondsFrom1970To2001 + seconds + microseconds / 1e6;
}

std::optional<Value> arrayOf(plist_t node, int depth) {
    Value array = Value::array();
    for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i) {
        auto element = valueOf(plist_array_get_item(node, i), depth + 1);
        if (!element) return std::nullopt;
        array.push_back(std::move(*element));
    }
    return array;
}

std::optional<Value> dictionaryOf(plist_t node, int depth) {
    Value dictionary = Value::object();
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(node, &position);
    const std::unique_ptr<void, decltype(&std::free)> owner(position, &std::free);
    while (true) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, position, &key, &item);
        const std::unique_ptr<char, decltype(&std::free)> keyOwner(key, &std::free);
        if (!item) return dictionary;
        auto value = valueOf(item, depth + 1);
        if (!value) return std::nullopt;
        dictionary[key ? key : ""] = std::move(*value);
    }
}

std::optional<Value> valueOf(plist_t node, int depth) {
    if (depth > kDeepestNesting) return std::nullopt;
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN: {
            std::uint8_t isTrue = 0;
            plist_get_bool_val(node, &isTrue);
            return Value(isTrue != 0);
        }
        case PLIST_UINT:
            return numberOf(node);
        case PLIST_REAL: {
            double number = 0;
            plist_get_real_val(node, &number);
            return Value(number);
        }
        case PLIST_STRING:
            return Value(textOf(node, plist_get_string_val));
        case PLIST_KEY:
            return Value(textOf(node, plist_get_key_val));
        case PLIST_DATA:
            return dataOf(node);
        case PLIST_DATE:
            return dateOf(node);
        case PLIST_ARRAY:
            return arrayOf(node, depth);
        case PLIST_DICT:
            return dictionaryOf(node, depth);
        default:
            return std::nullopt;
    }
}

// Writing.

/// The length of the UTF-8 character at the front; 0 when the bytes there are none.
std::size_t characterLength(std::string_view text) {
    const auto byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const auto lead = byte(0);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0 || length > text.size()) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) return 0;
    }
    const bool isOverlong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
    const bool isOutside = (lead == 0xED && byte(1) >= 0xA0) || (lead == 0xF4 && byte(1) >= 0x90);
    return isOverlong || isOutside ? 0 : length;
}

/// Whether XML 1.0 can hold the (well-formed) character: no control but tab and line ends, and neither U+FFFE nor
/// U+FFFF.
bool isXMLCharacter(std::string_view character) {
    const auto lead = static_cast<unsigned char>(character[0]);
    if (character.size() == 1) return lead >= 0x20 ? lead != 0x7F : lead == '\t' || lead == '\n';
    return character != "\xEF\xBF\xBE" && character != "\xEF\xBF\xBF";
}

std::string XMLText(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const auto length = characterLength(text);
        const auto character = text.substr(0, length == 0 ? 1 : length);
        result += length != 0 && isXMLCharacter(character) ? character : kReplacement;
        text.remove_prefix(character.size());
    }
    return result;
}

/// What does not fit a signed integer would read back as negative, so it is written as a real.
plist_t unsignedNodeOf(std::uint64_t number) {
    const bool fits = number <= static_cast<std::uint64_t>(INT64_MAX);
    return fits ? plist_new_uint(number) : plist_new_real(static_cast<double>(number));
}

plist_t nodeOf(const Value& value, int depth);

plist_t arrayNodeOf(const Value& value, int depth) {
    const plist_t array = plist_new_array();
    for (const auto& element : value) {
        if (const plist_t node = nodeOf(element, depth + 1)) plist_array_append_item(array, node);
    }
    return array;
}

plist_t dictionaryNodeOf(const Dictionary& dictionary, int depth) {
    const plist_t node = plist_new_dict();
    for (const auto& [key, value] : dictionary) {
        if (const plist_t item = nodeOf(value, depth + 1)) plist_dict_set_item(node, XMLText(key).c_str(), item);
    }
    return node;
}

/// Nothing for what a property list cannot hold: null, and what is nested deeper than can be read back.
plist_t nodeOf(const Value& value, int depth) {
    if (depth >= kDeepestNesting && value.is_structured()) return nullptr;
    switch (value.type()) {
        case Value::value_t::boolean:
            return plist_new_bool(value.get<bool>() ? 1 : 0);
        case Value::value_t::number_integer:
            // The bits of a negative number are kept as they are.
            return plist_new_uint(static_cast<std::uint64_t>(value.get<std::int64_t>()));
        case Value::value_t::number_unsigned:
            return unsignedNodeOf(value.get<std::uint64_t>());
        case Value::value_t::number_float:
            return std::isfinite(value.get<double>()) ? plist_new_real(value.get<double>()) : nullptr;
        case Value::value_t::string:
            return plist_new_string(XMLText(value.get_ref<const std::string&>()).c_str());
        case Value::value_t::binary: {
            const Data& bytes = value.get_binary();
            return plist_new_data(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        }
        case Value::value_t::array:
            return arrayNodeOf(value, depth);
        case Value::value_t::object:
            return dictionaryNodeOf(value.get_ref<const Dictionary&>(), depth);
        default:
            return nullptr;
    }
}

Data XMLOf(const Node& node) {
    char* xml = nullptr;
    std::uint32_t length = 0;
    if (node) plist_to_xml(node.get(), &xml, &length);
    Data bytes;
    if (xml) bytes.assign(xml, xml + length);
    plist_to_xml_free(xml);
    return bytes;
}

}  // namespace

std::optional<Value> NSPropertyListSerialization::propertyListWithData(const Data& bytes) {
    const auto* text = reinterpret_cast<const char*>(bytes.data());
    const auto length = static_cast<std::uint32_t>(bytes.size());
    plist_t parsed = nullptr;
    if (isBinary(bytes)) {
        plist_from_bin(text, length, &parsed);
    } else if (nestsWithinLimit({text, bytes.size()})) {
        plist_from_xml(text, length, &parsed);
    }
    const Node node(parsed, &plist_free);
    return node ? valueOf(node.get(), 0) : std::nullopt;
}

Data NSPropertyListSerialization::dataWithPropertyList(const Value& propertyList) {
    return XMLOf(Node(nodeOf(propertyList, 0), &plist_free));
}

std::optional<Dictionary> NSPropertyListSerialization::dictionaryWithContentsOfFile(const std::string& path) {
    const auto bytes = NSFileManager::contentsAtPath(path);
    auto propertyList = bytes ? propertyListWithData(*bytes) : std::nullopt;
    if (!propertyList || !propertyList->is_object()) return std::nullopt;
    return std::move(propertyList->get_ref<Dictionary&>());
}

bool NSPropertyListSerialization::writeToFile(const Dictionary& dictionary, const std::string& path) {
    const auto bytes = XMLOf(Node(dictionaryNodeOf(dictionary, 0), &plist_free));
    return !bytes.empty() && NSFileManager::writeToFile(bytes, path);
}

}  // namespace vorlane

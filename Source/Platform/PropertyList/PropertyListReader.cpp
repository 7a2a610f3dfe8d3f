#include "Platform/PropertyList/PropertyListReader.h"

#include <plist/plist.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/PropertyList/BinaryPropertyListScanner.h"
#include "Platform/PropertyList/PropertyListText.h"
#include "Platform/PropertyList/XMLPropertyListReader.h"

namespace vorlane {

namespace {

constexpr double kSecondsFrom1970To2001 = 978307200.0;

using Node = std::unique_ptr<void, decltype(&plist_free)>;
using Allocation = std::unique_ptr<void, decltype(&std::free)>;

std::optional<Value> valueOf(plist_t node);

/// libplist returns the bits of an integer and not whether it is signed; only its XML shows that.
bool isNegative(plist_t node) {
    const Node copy(plist_copy(node), &plist_free);
    char* xml = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(copy.get(), &xml, &length);
    const bool found = xml && std::string_view(xml, length).find("<integer>-") != std::string_view::npos;
    plist_to_xml_free(xml);
    return found;
}

Value integerOf(plist_t node) {
    std::uint64_t number = 0;
    plist_get_uint_val(node, &number);
    const bool fits = number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (fits || isNegative(node)) return static_cast<std::int64_t>(number);
    return number;
}

std::optional<Value> realOf(plist_t node) {
    double number = 0;
    plist_get_real_val(node, &number);
    if (!std::isfinite(number)) return std::nullopt;
    return number;
}

Value stringOf(plist_t node) {
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return PropertyListText::wellFormed(text ? std::string_view(text) : std::string_view());
}

Value dataOf(plist_t node) {
    std::uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return Value::binary(bytes ? Data(bytes, bytes + length) : Data());
}

Value dateOf(plist_t node) {
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    return kSecondsFrom1970To2001 + seconds + microseconds / 1e6;
}

Value arrayOf(plist_t node) {
    Value array = Value::array();
    plist_array_iter position = nullptr;
    plist_array_new_iter(node, &position);
    const Allocation owner(position, &std::free);
    while (true) {
        plist_t item = nullptr;
        plist_array_next_item(node, position, &item);
        if (!item) return array;
        if (auto value = valueOf(item)) array.push_back(std::move(*value));
    }
}

Value dictionaryOf(plist_t node) {
    Value dictionary = Value::object();
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(node, &position);
    const Allocation owner(position, &std::free);
    while (true) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, position, &key, &item);
        const Allocation keyOwner(key, &std::free);
        if (!item) return dictionary;
        auto value = valueOf(item);
        if (key && value) dictionary[PropertyListText::wellFormed(key)] = std::move(*value);
    }
}

/// Goes no deeper than what was read, whose nesting the scanner has limited.
std::optional<Value> valueOf(plist_t node) {
    switch (plist_get_node_type(node)) {
        case PLIST_BOOLEAN: {
            std::uint8_t isTrue = 0;
            plist_get_bool_val(node, &isTrue);
            return Value(isTrue != 0);
        }
        case PLIST_UINT:
            return integerOf(node);
        case PLIST_REAL:
            return realOf(node);
        case PLIST_STRING:
            return stringOf(node);
        case PLIST_DATA:
            return dataOf(node);
        case PLIST_DATE:
            return dateOf(node);
        case PLIST_ARRAY:
            return arrayOf(node);
        case PLIST_DICT:
            return dictionaryOf(node);
        default:
            return std::nullopt;
    }
}

Node parseBinary(const Data& bytes) {
    plist_t root = nullptr;
    // The longest file is far shorter than what libplist can count.
    if (bytes.size() <= std::numeric_limits<std::uint32_t>::max() && BinaryPropertyListScanner::isSound(bytes)) {
        plist_from_bin(reinterpret_cast<const char*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()), &root);
    }
    return {root, &plist_free};
}

}  // namespace

std::optional<Value> PropertyListReader::read(const Data& bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (!text.starts_with("bplist")) return XMLPropertyListReader::read(text);
    const Node root = parseBinary(bytes);
    return root ? valueOf(root.get()) : std::nullopt;
}

}  // namespace vorlane

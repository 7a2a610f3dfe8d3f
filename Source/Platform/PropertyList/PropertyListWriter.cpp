#include "Platform/PropertyList/PropertyListWriter.h"

#include <fmt/format.h>
#include <plist/plist.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "Platform/PropertyList/PlainNumbers.h"
#include "Platform/PropertyList/PropertyListText.h"

namespace vorlane {

namespace {

using Node = std::unique_ptr<void, decltype(&plist_free)>;

/// `levels` is how many arrays and dictionaries may still be opened. Nothing for what is left out.
plist_t nodeOf(const Value& value, int levels);

plist_t unsignedNodeOf(std::uint64_t number) {
    if (number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) return plist_new_uint(number);
    // Given by its bits, so large a number would be written as a negative one; read from text, it is known to be
    // unsigned.
    const auto xml = fmt::format("<plist version=\"1.0\"><integer>{}</integer></plist>", number);
    plist_t node = nullptr;
    plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &node);
    return node;
}

plist_t arrayNodeOf(const Array& array, int levels) {
    const plist_t node = plist_new_array();
    for (const auto& element : array) {
        if (const plist_t item = nodeOf(element, levels)) plist_array_append_item(node, item);
    }
    return node;
}

plist_t dictionaryNodeOf(const Dictionary& dictionary, int levels) {
    const plist_t node = plist_new_dict();
    for (const auto& [key, value] : dictionary) {
        const plist_t item = nodeOf(value, levels);
        if (item) plist_dict_set_item(node, PropertyListText::fitForXML(key).c_str(), item);
    }
    return node;
}

plist_t nodeOf(const Value& value, int levels) {
    if (levels <= 0 && value.is_structured()) return nullptr;
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
            return plist_new_string(PropertyListText::fitForXML(value.get_ref<const std::string&>()).c_str());
        case Value::value_t::binary: {
            const Data& bytes = value.get_binary();
            return plist_new_data(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        }
        case Value::value_t::array:
            return arrayNodeOf(value.get_ref<const Array&>(), levels - 1);
        case Value::value_t::object:
            return dictionaryNodeOf(value.get_ref<const Dictionary&>(), levels - 1);
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

Data PropertyListWriter::write(const Value& value, int limit) {
    const PlainNumbers plainNumbers;
    return XMLOf(Node(nodeOf(value, limit), &plist_free));
}

Data PropertyListWriter::write(const Dictionary& dictionary, int limit) {
    const PlainNumbers plainNumbers;
    return XMLOf(Node(dictionaryNodeOf(dictionary, limit - 1), &plist_free));
}

}  // namespace vorlane

#include "Platform/PropertyList/PropertyListElements.h"

#include <cstdint>
#include <utility>

#include "Platform/NSPropertyListSerialization.h"

namespace vorlane {

namespace {

std::string_view textOf(const Data& bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

void append(Data& bytes, std::string_view text) {
    const auto* const first = reinterpret_cast<const std::uint8_t*>(text.data());
    bytes.insert(bytes.end(), first, first + text.size());
}

/// The property list of a dictionary whose only key holds an array of one element.
Data frameOf(const std::string& key, Value element) {
    Array array;
    array.push_back(std::move(element));
    return NSPropertyListSerialization::dataWithPropertyList(Dictionary{{key, std::move(array)}});
}

/// The offset of the line after the one at `offset`.
std::size_t nextLine(std::string_view text, std::size_t offset) { return text.find('\n', offset) + 1; }

}  // namespace

std::string PropertyListElements::element(Dictionary fields) {
    // In its final position, so that the limit of nesting is that of the whole list.
    const auto frame = frameOf("elements", std::move(fields));
    const auto text = textOf(frame);
    const auto start = nextLine(text, text.find("<array>"));
    const auto end = text.rfind('\n', text.rfind("</array>")) + 1;
    return std::string(text.substr(start, end - start));
}

Data PropertyListElements::listOf(const std::string& key, const std::vector<std::string_view>& elements) {
    const auto frame = frameOf(key, "element");
    const auto text = textOf(frame);
    const auto start = nextLine(text, text.find("<array>"));
    const auto end = nextLine(text, text.find("element</string>", start));
    std::size_t length = text.size();
    for (const auto element : elements) length += element.size();
    Data bytes;
    bytes.reserve(length);
    append(bytes, text.substr(0, start));
    for (const auto element : elements) append(bytes, element);
    append(bytes, text.substr(end));
    return bytes;
}

}  // namespace vorlane

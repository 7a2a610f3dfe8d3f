#include "Platform/PropertyList/PropertyListElements.h"

#include "Platform/PropertyList/PropertyListWriter.h"

namespace vorlane {

namespace {

/// A list nested deeper than 512 is not read back; the element stands in an array in a dictionary.
constexpr int kDeepestElement = 510;

constexpr std::string_view kPlaceholder = "<string>element</string>";

std::string_view textOf(const Data& bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

void append(Data& bytes, std::string_view text) { bytes.insert(bytes.end(), text.begin(), text.end()); }

}  // namespace

std::string PropertyListElements::element(const Dictionary& fields) {
    const auto document = PropertyListWriter::write(fields, kDeepestElement);
    const auto text = textOf(document);
    const auto start = text.find("<dict");
    const auto end = text.rfind("</plist>");
    if (start >= end || end == std::string_view::npos) return {};
    return std::string(text.substr(start, end - start));
}

Data PropertyListElements::listOf(const std::string& key, const std::vector<std::string_view>& elements) {
    const auto frame = PropertyListWriter::write(Dictionary{{key, Array{"element"}}}, 2);
    const auto text = textOf(frame);
    const auto place = text.find(kPlaceholder);
    std::size_t length = text.size();
    for (const auto element : elements) length += element.size();
    Data bytes;
    bytes.reserve(length);
    append(bytes, text.substr(0, place));
    for (const auto element : elements) append(bytes, element);
    append(bytes, text.substr(place + kPlaceholder.size()));
    return bytes;
}

}  // namespace vorlane

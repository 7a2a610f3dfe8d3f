#include "Platform/PropertyList/PropertyListWriter.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "Platform/PropertyList/PropertyListText.h"

namespace vorlane {

namespace {

// With the document type, by which other readers know a property list.
constexpr std::string_view kStart =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
constexpr std::string_view kEnd = "</plist>\n";

/// In decimal, without the help of a locale; a real has just the digits that it needs to be read back to the last bit.
template <class Number>
std::string decimal(Number number) {
    std::array<char, 32> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), result.ptr};
}

std::string base64(const Data& bytes) {
    constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t start = 0; start < bytes.size(); start += 3) {
        std::uint32_t bits = 0;
        for (std::size_t i = start; i < start + 3; ++i) bits = (bits << 8U) | (i < bytes.size() ? bytes[i] : 0U);
        for (const unsigned shift : {18U, 12U, 6U, 0U}) text += kLetters[(bits >> shift) & 0x3FU];
    }
    const std::size_t padding = (3 - bytes.size() % 3) % 3;
    text.replace(text.size() - padding, padding, padding, '=');
    return text;
}

}  // namespace

Data PropertyListWriter::write(const Value& root, int limit) {
    PropertyListWriter writer(limit);
    return writer.isHeld(root) ? writer.documentOf(root) : Data();
}

Data PropertyListWriter::write(const Dictionary& root, int limit) { return PropertyListWriter(limit).documentOf(root); }

Data PropertyListWriter::write(const Array& root, int limit) { return PropertyListWriter(limit).documentOf(root); }

template <class Root>
Data PropertyListWriter::documentOf(const Root& root) {
    xml_ = kStart;
    append(root);
    xml_ += kEnd;
    // A reader counts the root too.
    if (valueCount_ >= DocumentLimits::kMostValuesInPropertyList) return {};
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(xml_.data());
    return {bytes, bytes + xml_.size()};
}

/// Whether a property list can hold the value at this depth.
bool PropertyListWriter::isHeld(const Value& value) const {
    if (value.is_structured()) return depth_ < limit_;
    if (value.is_number_float()) return std::isfinite(value.get<double>());
    return !value.is_null() && !value.is_discarded();
}

void PropertyListWriter::append(const Value& value) {
    if (++valueCount_ > DocumentLimits::kMostValuesInPropertyList) return;
    switch (value.type()) {
        case Value::value_t::boolean:
            return appendLine(value.get<bool>() ? "<true/>" : "<false/>");
        case Value::value_t::number_integer:
            return appendElement("integer", decimal(value.get<std::int64_t>()));
        case Value::value_t::number_unsigned:
            return appendElement("integer", decimal(value.get<std::uint64_t>()));
        case Value::value_t::number_float:
            return appendElement("real", decimal(value.get<double>()));
        case Value::value_t::string:
            return appendElement("string", value.get_ref<const std::string&>());
        case Value::value_t::binary:
            return appendElement("data", base64(value.get_binary()));
        case Value::value_t::array:
            return append(value.get_ref<const Array&>());
        case Value::value_t::object:
            return append(value.get_ref<const Dictionary&>());
        default:
            return;
    }
}

void PropertyListWriter::append(const Dictionary& dictionary) {
    if (dictionary.empty()) return appendLine("<dict/>");
    appendLine("<dict>");
    ++depth_;
    for (const auto& [key, value] : dictionary) {
        if (!isHeld(value)) continue;
        appendElement("key", key);
        append(value);
    }
    --depth_;
    appendLine("</dict>");
}

void PropertyListWriter::append(const Array& array) {
    if (array.empty()) return appendLine("<array/>");
    appendLine("<array>");
    ++depth_;
    for (const auto& element : array) {
        if (isHeld(element)) append(element);
    }
    --depth_;
    appendLine("</array>");
}

void PropertyListWriter::appendLine(std::string_view line) {
    xml_.append(static_cast<std::size_t>(depth_), '\t');
    xml_ += line;
    xml_ += '\n';
}

void PropertyListWriter::appendElement(std::string_view name, std::string_view text) {
    xml_.append(static_cast<std::size_t>(depth_), '\t');
    xml_.append("<").append(name).append(">");
    appendText(text);
    xml_.append("</").append(name).append(">\n");
}

void PropertyListWriter::appendText(std::string_view text) {
    constexpr std::string_view kSpecial = "&<>\r";
    std::string repaired;
    std::string_view rest = text;
    if (!PropertyListText::isPlain(text)) rest = repaired = PropertyListText::fitForXML(text);
    while (true) {
        const auto special = rest.find_first_of(kSpecial);
        xml_ += rest.substr(0, special);
        if (special == std::string_view::npos) return;
        appendSpecial(rest[special]);
        rest.remove_prefix(special + 1);
    }
}

void PropertyListWriter::appendSpecial(char character) {
    if (character == '&') {
        xml_ += "&amp;";
    } else if (character == '<') {
        xml_ += "&lt;";
    } else if (character == '>') {
        xml_ += "&gt;";
    } else {
        // As it stands, readers take a carriage return for a line end of the file.
        xml_ += "&#13;";
    }
}

}  // namespace vorlane

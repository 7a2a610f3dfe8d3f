#include "Simulator/Service/Store/Tag.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstdint>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"

namespace vorlane::service {
namespace {

constexpr const char* kString = "string";
constexpr const char* kNumeric = "numeric";
constexpr const char* kTimestamp = "timestamp";

std::string typeOf(const Dictionary& payload) {
    const auto* type = valueForKey(payload, "type");
    if (!type || type->is_null()) {
        const auto* value = valueForKey(payload, "value");
        return value && value->is_number() ? kNumeric : kString;
    }
    const auto text = stringForKey(payload, "type").value_or("");
    if (text != kString && text != kNumeric && text != kTimestamp)
        throw MalformedRequest("a tag's \"type\" is none of \"string\", \"numeric\", \"timestamp\"");
    return text;
}

std::optional<std::string> valueText(const Value* value, const std::string& name) {
    if (!value || value->is_null()) return std::nullopt;
    if (value->is_string()) return value->get<std::string>();
    if (value->is_boolean()) return value->get<bool>() ? "true" : "false";
    if (auto number = stringValue(*value)) return number;
    throw MalformedRequest(fmt::format("the value of the tag \"{}\" is neither a string nor a number", name));
}

template <class Number>
std::optional<Number> wholeTextAs(const std::string& text) {
    Number number{};
    const auto* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return number;
}

/// Returns `nullopt` for a string that is not entirely a number.
std::optional<Value> numberOf(const std::string& text) {
    if (const auto integer = wholeTextAs<std::int64_t>(text)) return Value(*integer);
    const auto number = wholeTextAs<double>(text);
    if (!number || !std::isfinite(*number)) return std::nullopt;
    return Value(*number);
}

}  // namespace

Tag Tag::fromPayload(const Dictionary& payload) {
    Tag tag;
    tag.name = requiredText(payload, "name");
    tag.type = typeOf(payload);
    tag.value = valueText(valueForKey(payload, "value"), tag.name);
    return tag;
}

Value Tag::readValue() const {
    if (!value) return nullptr;
    const auto number = type == kString ? std::nullopt : numberOf(*value);
    return number ? *number : Value(*value);
}

}  // namespace vorlane::service

#include "Categories/NSDictionary+VLJSON.h"

#include <fmt/format.h>

#include <cmath>
#include <string_view>
#include <utility>
#include <vector>

#include "Core/VLError.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

constexpr int kDeepestNesting = 512;

/// Visits every value below `root`, none deeper than the limit, without recursion. False as soon as something is nested
/// deeper, or `visit` says so.
template <class Visit>
bool visitAll(const Value& root, Visit visit) {
    std::vector<std::pair<const Value*, int>> pending{{&root, 1}};
    while (!pending.empty()) {
        const auto [value, depth] = pending.back();
        pending.pop_back();
        if (!visit(*value)) return false;
        if (!value->is_structured()) continue;
        if (depth > kDeepestNesting) return false;
        for (const auto& element : *value) pending.emplace_back(&element, depth + 1);
    }
    return true;
}

bool isHeldByJSON(const Value& value) {
    if (value.is_binary() || value.is_discarded()) return false;
    return !value.is_number_float() || std::isfinite(value.get<double>());
}

/// What the parser would not refuse by itself, or only after it has built a tree too deep to handle: nesting beyond the
/// limit, and NUL bytes outside strings, which it takes for the end.
bool isParsable(std::string_view text) {
    int depth = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char character = text[i];
        if (isInString) {
            if (character == '\\') ++i;
            isInString = character != '"';
        } else if (character == '"') {
            isInString = true;
        } else if (character == '{' || character == '[') {
            if (++depth > kDeepestNesting) return false;
        } else if (character == '}' || character == ']') {
            --depth;
        } else if (character == '\0') {
            return false;
        }
    }
    return true;
}

/// Data as its length, so that a description stays short.
Value withoutBinary(const Value& value) {
    if (value.is_binary()) return fmt::format("{{length = {}}}", value.get_binary().size());
    if (!value.is_structured()) return value;
    Value copy = value;
    std::vector<Value*> pending{&copy};
    while (!pending.empty()) {
        Value* container = pending.back();
        pending.pop_back();
        for (auto& element : *container) {
            if (element.is_binary()) element = fmt::format("{{length = {}}}", element.get_binary().size());
            if (element.is_structured()) pending.push_back(&element);
        }
    }
    return copy;
}

NSError unparsableError(const char* why) {
    return VLError::errorWithDomain(
        NSCocoaErrorDomain, NSPropertyListReadCorruptError,
        fmt::format("The data couldn't be read because it isn't in the correct format. {}", why));
}

}  // namespace

std::string vl_asJSON(const Dictionary& dictionary) {
    const Value object(dictionary);
    if (!visitAll(object, isHeldByJSON)) {
        logMessage(VLLogLevel::Error, "The dictionary is not a valid JSON object!");
        return {};
    }
    try {
        return object.dump();
    } catch (const Value::exception&) {
        // The one thing left that the serialiser refuses is text that is not UTF-8.
        logMessage(VLLogLevel::Error, "Error converting dictionary to JSON string - NSData was not a valid UTF8 string",
                   object);
        return {};
    }
}

std::optional<Dictionary> vl_dictionaryWithJSON(const std::optional<std::string>& text, std::optional<NSError>& error) {
    error.reset();
    if (!text || text->empty()) {
        error = VLError::errorWithDomain(VLErrorDomainNetwork, 0, "Cannot parse JSON object from nil or empty string");
        return std::nullopt;
    }
    if (!isParsable(*text)) {
        error = unparsableError("It is nested too deep, or holds bytes that JSON does not have.");
        return std::nullopt;
    }
    auto parsed = Value::parse(*text, nullptr, false);
    if (parsed.is_discarded()) {
        error = unparsableError("It is no JSON text.");
        return std::nullopt;
    }
    if (!parsed.is_object()) {
        error = unparsableError("Its top level is not an object.");
        return std::nullopt;
    }
    return std::move(parsed.get_ref<Dictionary&>());
}

Dictionary vl_dictionaryWithJSON(const std::optional<std::string>& text) {
    std::optional<NSError> error;
    auto dictionary = vl_dictionaryWithJSON(text, error);
    if (dictionary) return std::move(*dictionary);
    logMessage(VLLogLevel::Error,
               fmt::format("Error converting JSON string to dictionary: {}", error ? error->description() : "(null)"));
    return {};
}

std::string vl_description(const Value& value) {
    if (value.is_string()) return value.get<std::string>();
    if (!visitAll(value, [](const Value&) { return true; })) return "(nested too deep)";
    return withoutBinary(value).dump(-1, ' ', false, Value::error_handler_t::replace);
}

std::string vl_description(const std::optional<Value>& value) { return value ? vl_description(*value) : "(null)"; }

std::string vl_description(const std::optional<Dictionary>& dictionary) {
    return dictionary ? vl_description(Value(*dictionary)) : "(null)";
}

std::string vl_description(const std::optional<std::string>& text) { return text.value_or("(null)"); }

}  // namespace vorlane

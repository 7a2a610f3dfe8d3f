#include "Simulator/Service/Http/RequestPayload.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/ServiceRequest.h"
#include "Simulator/Service/Http/URLText.h"

namespace vorlane::service {
namespace {

constexpr std::string_view kFormType = "application/x-www-form-urlencoded";
constexpr std::string_view kJSONType = "application/json";
// A value takes many times the memory of its JSON, so a body within the size limit could still be too large.
constexpr std::size_t kMostValues = 1'000'000;
constexpr std::ptrdiff_t kMostFields = 1'000;

/// The media type without its parameters.
bool isOfType(const ServiceRequest& request, std::string_view type) {
    const auto header = request.header("Content-Type").value_or("");
    const auto end = std::min(header.find_first_of("; "), header.size());
    return std::string_view(header).substr(0, end) == type;
}

bool holdsTooMuch(std::string_view text) {
    std::size_t values = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char character = text[i];
        if (character == '"') isInString = !isInString;
        if (!isInString && (character == ',' || character == '[' || character == '{')) ++values;
        if (isInString && character == '\\') ++i;
    }
    return values > kMostValues;
}

}  // namespace

Dictionary formPayload(const ServiceRequest& request) {
    if (!isOfType(request, kFormType)) throw MalformedRequest(fmt::format("the body is not of type {}", kFormType));
    if (std::count(request.body.begin(), request.body.end(), '&') >= kMostFields)
        throw MalformedRequest("the form has too many fields");
    const auto fields = formFields(request.body);
    const auto payload = fields.find("payload");
    if (payload == fields.end()) throw MalformedRequest("the form has no field \"payload\"");
    return jsonObject(payload->second);
}

Dictionary jsonPayload(const ServiceRequest& request) {
    if (!isOfType(request, kJSONType)) throw MalformedRequest(fmt::format("the body is not of type {}", kJSONType));
    return jsonObject(request.body);
}

Dictionary jsonObject(const std::string& text) {
    if (holdsTooMuch(text)) throw MalformedRequest("the JSON has too many values");
    std::optional<NSError> error;
    auto object = vl_dictionaryWithJSON(text, error);
    if (!object) throw MalformedRequest(error ? error->localizedDescription() : "not a JSON object");
    return std::move(*object);
}

Value payloadOrNull(const ServiceRequest& request) {
    try {
        return Value(isOfType(request, kFormType) ? formPayload(request) : jsonPayload(request));
    } catch (const MalformedRequest&) {
        return nullptr;
    }
}

const Value* wishedValue(const Dictionary& dictionary, const std::string& key) {
    const auto* value = valueForKey(dictionary, key);
    return value && !value->is_null() ? value : nullptr;
}

void requireKnownKeys(const Dictionary& dictionary, std::initializer_list<std::string_view> keys) {
    for (const auto& [key, value] : dictionary) {
        if (std::find(keys.begin(), keys.end(), key) == keys.end())
            throw MalformedRequest(fmt::format("unknown name \"{}\"", key));
    }
}

std::optional<Dictionary> optionalMetadata(const Dictionary& dictionary, const std::string& reservedKey) {
    const auto* value = wishedValue(dictionary, "metadata");
    if (!value) return std::nullopt;
    if (!value->is_object()) throw MalformedRequest("\"metadata\" is not an object");
    if (!reservedKey.empty() && value->contains(reservedKey))
        throw MalformedRequest(fmt::format("\"metadata\" has \"{}\"", reservedKey));
    return value->get<Dictionary>();
}

std::optional<std::string> optionalText(const Dictionary& dictionary, const std::string& key) {
    return wishedValue(dictionary, key) ? std::optional(requiredText(dictionary, key)) : std::nullopt;
}

std::string requiredText(const Dictionary& dictionary, const std::string& key) {
    auto text = stringForKey(dictionary, key);
    if (!text || text->empty()) throw MalformedRequest(fmt::format("\"{}\" is missing, empty or not a string", key));
    return std::move(*text);
}

std::string requiredTextOrNumber(const Dictionary& dictionary, const std::string& key) {
    const auto* value = valueForKey(dictionary, key);
    if (!value || !value->is_number()) return requiredText(dictionary, key);
    return stringValue(*value).value_or("");
}

std::string hexadecimalBytes(const Dictionary& dictionary, const std::string& key) {
    const auto text = requiredText(dictionary, key);
    constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
    if (text.size() % 2 != 0 || text.find_first_not_of(kDigits) != std::string::npos)
        throw MalformedRequest(fmt::format("\"{}\" is not hexadecimal", key));
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); i += 2)
        bytes += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
    return bytes;
}

}  // namespace vorlane::service

#include "Categories/NSDictionary+VLJSON.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>
#include <vector>

#include "Core/Base/VLError.h"
#include "Platform/Internal/DocumentLimits.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

/// The serialiser's number for a string that is not UTF-8.
constexpr int kInvalidUTF8ExceptionId = 316;
/// The code in `NSCocoaErrorDomain` of an object that cannot be written.
constexpr std::int64_t kWriteInvalidErrorCode = 3852;
constexpr const char* kTooDeepDescription = "(nested too deep)";

template <class Visit>
bool visitAll(const Dictionary& dictionary, int levels, Visit visit);

/// Visits a value and all values inside it. Returns false as soon as `visit` does, or at the first value that is nested
/// deeper than `levels`, so the recursion is bounded.
template <class Visit>
bool visitAll(const Value& value, int levels, Visit visit) {
    if (!visit(value)) return false;
    if (const auto* dictionary = value.get_ptr<const Dictionary*>()) return visitAll(*dictionary, levels, visit);
    const auto* array = value.get_ptr<const Array*>();
    if (!array) return true;
    return levels > 0 && std::all_of(array->begin(), array->end(), [levels, &visit](const Value& element) {
               return visitAll(element, levels - 1, visit);
           });
}

template <class Visit>
bool visitAll(const Dictionary& dictionary, int levels, Visit visit) {
    return levels > 0 && std::all_of(dictionary.begin(), dictionary.end(), [levels, &visit](const auto& entry) {
               return visitAll(entry.second, levels - 1, visit);
           });
}

template <class Container>
bool isNestedTooDeep(const Container& container) {
    return !visitAll(container, DocumentLimits::kDeepestNesting, [](const Value&) { return true; });
}

bool isHeldByJSON(const Value& value) {
    if (value.is_binary() || value.is_discarded()) return false;
    return !value.is_number_float() || std::isfinite(value.get<double>());
}

/// Whether the parser may have the text. It would not refuse by itself, or only after it has built a tree that is too
/// deep or too large: nesting and values beyond DocumentLimits, and NUL bytes outside strings, which it takes for the
/// end.
bool isParsable(std::string_view text) {
    int depth = 0;
    bool isInString = false;
    // Each value is the first of the document or of its container, or follows a comma.
    std::size_t valueCount = 1;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char character = text[i];
        if (isInString) {
            if (character == '\\') ++i;
            isInString = character != '"';
        } else if (character == '"') {
            isInString = true;
        } else if (character == '{' || character == '[') {
            if (++depth > DocumentLimits::kDeepestNesting) return false;
            ++valueCount;
        } else if (character == '}' || character == ']') {
            --depth;
        } else if (character == ',') {
            ++valueCount;
        } else if (character == '\0') {
            return false;
        }
        if (valueCount > DocumentLimits::kMostValuesInJSON) return false;
    }
    return true;
}

/// Replaces data by its length, to keep descriptions short.
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

bool isValidJSONObject(const Dictionary& dictionary) {
    const bool isValid = visitAll(dictionary, DocumentLimits::kDeepestNesting, isHeldByJSON);
    if (!isValid) logMessage(VLLogLevel::Error, "The dictionary is not a valid JSON object!");
    return isValid;
}

void logSerialisationFailure(const Value& object, const Value::exception& exception) {
    if (exception.id == kInvalidUTF8ExceptionId) {
        logMessage(VLLogLevel::Error, "Error converting dictionary to JSON string - NSData was not a valid UTF8 string",
                   object);
        return;
    }
    const auto error = VLError::errorWithDomain(NSCocoaErrorDomain, kWriteInvalidErrorCode, exception.what());
    logMessage(VLLogLevel::Error, fmt::format("Error converting dictionary to JSON string: {}", error.description()));
}

std::string textOf(const Value& object) {
    try {
        return object.dump();
    } catch (const Value::exception& exception) {
        logSerialisationFailure(object, exception);
        return {};
    }
}

}  // namespace

std::string vl_asJSON(const Dictionary& dictionary) {
    // Checked before it is copied, because copying and writing recurse.
    return isValidJSONObject(dictionary) ? textOf(Value(dictionary)) : std::string();
}

std::string vl_asJSON(Dictionary&& dictionary) {
    return isValidJSONObject(dictionary) ? textOf(Value(std::move(dictionary))) : std::string();
}

std::optional<Dictionary> vl_dictionaryWithJSON(const std::optional<std::string>& text, std::optional<NSError>& error) {
    error.reset();
    if (!text || text->empty()) {
        error = VLError::errorWithDomain(VLErrorDomainNetwork, 0, "Cannot parse JSON object from nil or empty string");
        return std::nullopt;
    }
    if (!isParsable(*text)) {
        error = unparsableError("It is nested too deep, holds too many values, or bytes that JSON does not have.");
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
    if (isNestedTooDeep(value)) return kTooDeepDescription;
    return withoutBinary(value).dump(-1, ' ', false, Value::error_handler_t::replace);
}

std::string vl_description(const std::optional<Value>& value) { return value ? vl_description(*value) : "(null)"; }

std::string vl_description(const std::optional<Dictionary>& dictionary) {
    if (!dictionary) return "(null)";
    return isNestedTooDeep(*dictionary) ? kTooDeepDescription : vl_description(Value(*dictionary));
}

std::string vl_description(const std::optional<std::string>& text) { return text.value_or("(null)"); }

}  // namespace vorlane

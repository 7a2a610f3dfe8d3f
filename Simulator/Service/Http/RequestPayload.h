#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "Public/VLValue.h"

namespace vorlane::service {

struct ServiceRequest;

/// The object in a body of type "application/x-www-form-urlencoded": the JSON text of its field "payload".
/// Throws MalformedRequest.
Dictionary formPayload(const ServiceRequest& request);

/// The object in a body of type "application/json". Throws MalformedRequest.
Dictionary jsonPayload(const ServiceRequest& request);

/// The object that the body holds, whatever its type says. Throws MalformedRequest.
Dictionary jsonObject(const std::string& text);

/// Whichever of the two payloads the request has; null when it has none.
Value payloadOrNull(const ServiceRequest& request);

/// What is under the key; null when there is nothing, or JSON's null.
const Value* wishedValue(const Dictionary& dictionary, const std::string& key);

/// Throws MalformedRequest when the object has a key that is none of these, which would otherwise go unnoticed.
void requireKnownKeys(const Dictionary& dictionary, std::initializer_list<std::string_view> keys);

/// The object under "metadata", which may be absent. Throws MalformedRequest when it is none, or has the key that
/// something else is to have in its place.
std::optional<Dictionary> optionalMetadata(const Dictionary& dictionary, const std::string& reservedKey = "");

/// The text under the key, which may be absent. Throws MalformedRequest when it is empty or no text.
std::optional<std::string> optionalText(const Dictionary& dictionary, const std::string& key);
/// The text under the key. Throws MalformedRequest when it is absent, empty or no text.
std::string requiredText(const Dictionary& dictionary, const std::string& key);
/// The same, where a number will do, too: its decimal text.
std::string requiredTextOrNumber(const Dictionary& dictionary, const std::string& key);

/// The bytes that the text under the key stands for, two hexadecimal digits each. Throws MalformedRequest when it is
/// something else.
std::string hexadecimalBytes(const Dictionary& dictionary, const std::string& key);

}  // namespace vorlane::service

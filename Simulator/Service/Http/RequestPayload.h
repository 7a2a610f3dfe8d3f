#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "Public/VLValue.h"

namespace vorlane::service {

struct ServiceRequest;

/// Returns the JSON object in the field "payload" of a body of type "application/x-www-form-urlencoded". Throws
/// MalformedRequest.
Dictionary formPayload(const ServiceRequest& request);

/// Returns the object in a body of type "application/json". Throws MalformedRequest.
Dictionary jsonPayload(const ServiceRequest& request);

/// Returns the object in a body of any type. Throws MalformedRequest.
Dictionary jsonObject(const std::string& text);

/// Returns the payload of either type, or null without one.
Value payloadOrNull(const ServiceRequest& request);

/// Returns the value under the key, or null if it is absent or JSON null.
const Value* wishedValue(const Dictionary& dictionary, const std::string& key);

/// Throws MalformedRequest if the object has any other key, so that a misspelt key does not go unnoticed.
void requireKnownKeys(const Dictionary& dictionary, std::initializer_list<std::string_view> keys);

/// Returns the object under "metadata", which may be absent. Throws MalformedRequest if it is not an object or has the
/// reserved key.
std::optional<Dictionary> optionalMetadata(const Dictionary& dictionary, const std::string& reservedKey = "");

/// Returns the string under the key, which may be absent. Throws MalformedRequest if it is empty or not a string.
std::optional<std::string> optionalText(const Dictionary& dictionary, const std::string& key);
/// Returns the string under the key. Throws MalformedRequest if it is absent, empty or not a string.
std::string requiredText(const Dictionary& dictionary, const std::string& key);
/// As `requiredText()`, and accepts a number, in decimal.
std::string requiredTextOrNumber(const Dictionary& dictionary, const std::string& key);

/// Returns the bytes under the key, written as two hexadecimal digits each. Throws MalformedRequest for any other
/// value.
std::string hexadecimalBytes(const Dictionary& dictionary, const std::string& key);

}  // namespace vorlane::service

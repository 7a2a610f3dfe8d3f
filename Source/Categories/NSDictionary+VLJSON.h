#pragma once

#include <optional>
#include <string>

#include "Platform/NSError.h"
#include "Public/VLValue.h"

namespace vorlane {

/// `vl_asJSON` returns the dictionary as compact JSON. Logs at ERROR and returns "" for values that JSON does not have
/// (data, numbers that are not finite, nesting deeper than 512) and for strings that are not UTF-8.
std::string vl_asJSON(const Dictionary& dictionary);
std::string vl_asJSON(Dictionary&& dictionary);

/// `vl_dictionaryWithJSON:error:` parses a JSON string with an object at its top level. For any other string it returns
/// `nullopt` and sets `error`: `VLErrorDomainNetwork` code 0 for `nullopt` or an empty string, otherwise
/// `NSCocoaErrorDomain` code 3840 (also for invalid UTF-8 and nesting deeper than 512).
std::optional<Dictionary> vl_dictionaryWithJSON(const std::optional<std::string>& text, std::optional<NSError>& error);

/// `vl_dictionaryWithJSON:` logs an error at ERROR and returns an empty dictionary then.
Dictionary vl_dictionaryWithJSON(const std::optional<std::string>& text);

/// Returns a value for log lines: its compact JSON, with data replaced by its length and invalid UTF-8 by U+FFFD; a
/// string without quotation marks; "(null)" for `nullopt`; "(nested too deep)" for nesting deeper than 512.
std::string vl_description(const Value& value);
std::string vl_description(const std::optional<Value>& value);
std::string vl_description(const std::optional<Dictionary>& dictionary);
std::string vl_description(const std::optional<std::string>& text);

}  // namespace vorlane

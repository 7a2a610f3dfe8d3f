#pragma once

#include <optional>
#include <string>

#include "Platform/NSError.h"
#include "Public/VLValue.h"

namespace vorlane {

/// `vl_asJSON` gives the dictionary as compact JSON text. Logs at ERROR and gives "" for what JSON cannot hold (data,
/// numbers that are not finite, nesting deeper than 512) and for text that is not UTF-8.
std::string vl_asJSON(const Dictionary& dictionary);
std::string vl_asJSON(Dictionary&& dictionary);

/// `vl_dictionaryWithJSON:error:` parses JSON text with an object at its top. Otherwise gives nothing and sets `error`:
/// `VLErrorDomainNetwork` code 0 for nil or empty text, `NSCocoaErrorDomain` code 3840 for any other (also when it is
/// not UTF-8, or nested deeper than 512).
std::optional<Dictionary> vl_dictionaryWithJSON(const std::optional<std::string>& text, std::optional<NSError>& error);

/// `vl_dictionaryWithJSON:` logs what went wrong at ERROR and gives an empty dictionary.
Dictionary vl_dictionaryWithJSON(const std::optional<std::string>& text);

/// A value as log lines show it: its compact JSON, with data as its length and invalid UTF-8 replaced; a string without
/// quotation marks; "(null)" for nothing; "(nested too deep)" for what is nested deeper than 512.
std::string vl_description(const Value& value);
std::string vl_description(const std::optional<Value>& value);
std::string vl_description(const std::optional<Dictionary>& dictionary);
std::string vl_description(const std::optional<std::string>& text);

}  // namespace vorlane

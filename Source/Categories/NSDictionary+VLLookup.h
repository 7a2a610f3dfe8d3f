#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

/// Typed look-ups in untrusted dictionaries: a value of the wrong type counts as absent. The pointers are valid until
/// the dictionary changes.
const Value* valueForKey(const Dictionary& dictionary, const std::string& key);
std::optional<std::string> stringForKey(const Dictionary& dictionary, const std::string& key);
/// Accepts any number, but no boolean.
std::optional<double> numberForKey(const Dictionary& dictionary, const std::string& key);
/// Accepts any number; truncated towards zero and clamped to 64 bits.
std::optional<std::int64_t> integerForKey(const Dictionary& dictionary, const std::string& key);
/// Accepts a boolean or a number; 0 is false.
std::optional<bool> boolForKey(const Dictionary& dictionary, const std::string& key);
std::optional<Data> dataForKey(const Dictionary& dictionary, const std::string& key);
const Dictionary* dictionaryForKey(const Dictionary& dictionary, const std::string& key);
const Array* arrayForKey(const Dictionary& dictionary, const std::string& key);

/// Returns a number as a 64-bit integer, as `integerForKey()` does; `nullopt` for any other type.
std::optional<std::int64_t> integerValue(const Value& value);
/// Returns a number as the shortest decimal string with the same value (42, 4.5, 1e+22), and a boolean as 1 or 0;
/// `nullopt` for any other type.
std::optional<std::string> stringValue(const Value& value);

/// Removes every null inside the value, because property lists have no null. Does not recurse.
void vl_removeNulls(Value& value);

}  // namespace vorlane

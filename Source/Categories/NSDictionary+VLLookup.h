#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

/// Typed look-ups in what comes from outside: a value of the wrong kind reads as absent. The pointers live as long as
/// the dictionary is left alone.
const Value* valueForKey(const Dictionary& dictionary, const std::string& key);
std::optional<std::string> stringForKey(const Dictionary& dictionary, const std::string& key);
/// Any number; a boolean is not one.
std::optional<double> numberForKey(const Dictionary& dictionary, const std::string& key);
/// Any number, its fraction cut off and held to the range of 64 bits.
std::optional<std::int64_t> integerForKey(const Dictionary& dictionary, const std::string& key);
/// A boolean, or a number, of which 0 is false.
std::optional<bool> boolForKey(const Dictionary& dictionary, const std::string& key);
std::optional<Data> dataForKey(const Dictionary& dictionary, const std::string& key);
const Dictionary* dictionaryForKey(const Dictionary& dictionary, const std::string& key);
const Array* arrayForKey(const Dictionary& dictionary, const std::string& key);

/// A number's 64-bit integer value, as `integerForKey()` has it; nothing for any other kind.
std::optional<std::int64_t> integerValue(const Value& value);
/// A number as decimal text, the shortest that reads back the same (42, 4.5, 1e+22); a boolean as 1 or 0; nothing for
/// any other kind.
std::optional<std::string> stringValue(const Value& value);

/// Drops every null inside the value, which property lists cannot hold. Does not recurse.
void vl_removeNulls(Value& value);

}  // namespace vorlane

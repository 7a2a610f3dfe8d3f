#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <vector>

namespace vorlane {

/// Any JSON or property-list value: null, boolean, number, string, data (its binary kind), array, dictionary.
using Value = nlohmann::json;
/// A dictionary with text keys.
using Dictionary = Value::object_t;
/// A list of values.
using Array = Value::array_t;
/// Raw bytes.
using Data = std::vector<std::uint8_t>;

/// A length of time in seconds.
using TimeInterval = double;

}  // namespace vorlane

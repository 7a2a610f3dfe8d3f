#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

/// The version of nlohmann/json that the library was built with. The installed copy of this header holds it as numbers.
#define VORLANE_JSON_VERSION_MAJOR NLOHMANN_JSON_VERSION_MAJOR
#define VORLANE_JSON_VERSION_MINOR NLOHMANN_JSON_VERSION_MINOR
#define VORLANE_JSON_VERSION_PATCH NLOHMANN_JSON_VERSION_PATCH

// nlohmann/json names its version in its namespace, and the library's exported signatures contain that name. A host
// that compiles with another version would not link.
#if NLOHMANN_JSON_VERSION_MAJOR != VORLANE_JSON_VERSION_MAJOR || \
    NLOHMANN_JSON_VERSION_MINOR != VORLANE_JSON_VERSION_MINOR || \
    NLOHMANN_JSON_VERSION_PATCH != VORLANE_JSON_VERSION_PATCH
#error \
    "Vorlane was built with another version of nlohmann/json, the one named in vorlane/VLTypes.h. Compile with that \
version, or build Vorlane with yours."
#endif
#if defined(JSON_DIAGNOSTICS) && JSON_DIAGNOSTICS
#error "JSON_DIAGNOSTICS changes the namespace of nlohmann/json, and Vorlane was built without it: leave it off."
#endif

namespace vorlane {

/// Any JSON or property-list value: null, boolean, number, string, data (its binary kind), array or dictionary. Only
/// declared here, because the definition is expensive to compile. Include `VLValue.h` to make or read one.
using Value = nlohmann::json;
/// A dictionary with string keys. Include `VLValue.h` to make or read one.
using Dictionary = std::map<std::string, Value, std::less<>>;
/// A list of values. Include `VLValue.h` to make or read one.
using Array = std::vector<Value>;
/// Raw bytes.
using Data = std::vector<std::uint8_t>;

/// A length of time in seconds.
using TimeInterval = double;

}  // namespace vorlane

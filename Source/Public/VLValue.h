#pragma once

#include <nlohmann/json.hpp>
#include <type_traits>

#include "Public/VLTypes.h"

/// Defines what `VLTypes.h` declares: `Value`, `Dictionary` and `Array`.
namespace vorlane {

static_assert(std::is_same_v<Dictionary, Value::object_t> && std::is_same_v<Array, Value::array_t>);

}  // namespace vorlane

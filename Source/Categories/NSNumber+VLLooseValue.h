#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

/// Accepts a number, or a string that is one decimal number ("59.91", "-1e3"). Returns `nullopt` for any other type and
/// for a value that is not finite.
std::optional<double> vl_looseNumber(const Value* value);

/// Accepts a string, or a number, which becomes a decimal string ("17"). Returns `nullopt` for any other type.
std::optional<std::string> vl_looseText(const Value* value);

}  // namespace vorlane

#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

/// A number, or a text that is wholly a decimal number ("59.91", "-1e3"). Nothing for any other kind, and for a value
/// that is not finite.
std::optional<double> vl_looseNumber(const Value* value);

/// A text, or a number as decimal text ("17"). Nothing for any other kind.
std::optional<std::string> vl_looseText(const Value* value);

}  // namespace vorlane

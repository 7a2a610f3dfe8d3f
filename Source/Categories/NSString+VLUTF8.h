#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Public/VLValue.h"

namespace vorlane {

/// Returns whether the bytes are well-formed UTF-8.
bool vl_isUTF8(std::string_view bytes);
/// Returns the bytes as a string; `nullopt` if they are not UTF-8.
std::optional<std::string> vl_stringWithUTF8Data(const Data& bytes);

}  // namespace vorlane

#pragma once

#include <string_view>

namespace vorlane {

/// `vl_isEqualToStringCaseInsensitive:` compares two strings, ignoring the case of ASCII letters.
bool vl_isEqualToStringCaseInsensitive(std::string_view text, std::string_view other);

}  // namespace vorlane

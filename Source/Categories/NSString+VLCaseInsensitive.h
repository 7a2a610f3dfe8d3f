#pragma once

#include <string_view>

namespace vorlane {

/// `vl_isEqualToStringCaseInsensitive:` tells whether both texts are equal when the case of ASCII letters is left
/// aside.
bool vl_isEqualToStringCaseInsensitive(std::string_view text, std::string_view other);

}  // namespace vorlane

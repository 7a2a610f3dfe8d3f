#include "Categories/NSString+VLCaseInsensitive.h"

#include <algorithm>

namespace vorlane {

namespace {

/// Without the locale's help, which an application may have changed.
char inCapitals(char letter) { return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 32) : letter; }

}  // namespace

bool vl_isEqualToStringCaseInsensitive(std::string_view text, std::string_view other) {
    return std::ranges::equal(text, other, {}, inCapitals, inCapitals);
}

}  // namespace vorlane

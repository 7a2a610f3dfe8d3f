#pragma once

#include <string>
#include <string_view>

namespace vorlane {

// Case of ASCII letters only. The C library's functions follow the locale, which the host may have set.

char inLowercase(char letter);
char inCapitals(char letter);
std::string lowercased(std::string text);
std::string capitalised(std::string text);
/// Whether both strings are equal but for the case of ASCII letters.
bool isEqualIgnoringCase(std::string_view text, std::string_view other);

}  // namespace vorlane

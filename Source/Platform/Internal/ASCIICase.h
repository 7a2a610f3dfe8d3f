#pragma once

#include <string>
#include <string_view>

namespace vorlane {

// Case of ASCII letters alone, without the locale's help: an application may have changed that.

char inLowercase(char letter);
char inCapitals(char letter);
std::string lowercased(std::string text);
std::string capitalised(std::string text);
/// Whether both texts are equal when the case is left aside.
bool isEqualIgnoringCase(std::string_view text, std::string_view other);

}  // namespace vorlane

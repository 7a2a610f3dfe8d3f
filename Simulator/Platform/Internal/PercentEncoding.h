#pragma once

#include <string>
#include <string_view>

namespace vorlane {

/// Encodes every byte but ASCII letters, digits and "-._~".
std::string percentEncoded(std::string_view plain);
/// Decodes every "%" with two characters behind it; a character other than a hexadecimal digit counts as 0.
std::string percentDecoded(std::string_view encoded);

}  // namespace vorlane

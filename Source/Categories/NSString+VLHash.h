#pragma once

#include <string>

namespace vorlane {

/// `vl_md5` returns the MD5 digest of the string's bytes as 32 lower-case hexadecimal digits.
std::string vl_md5(const std::string& text);

}  // namespace vorlane

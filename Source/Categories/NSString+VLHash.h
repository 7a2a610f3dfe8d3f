#pragma once

#include <string>

namespace vorlane {

/// `vl_md5` gives the MD5 digest of the text's bytes as 32 lower-case hexadecimal digits.
std::string vl_md5(const std::string& text);

}  // namespace vorlane

#pragma once

#include <string>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// For hosts whose push transport gives the token as text.
class VORLANE_EXPORT VLDeviceTokenHelper {
public:
    /// `hexStringToData:` gives the bytes that the text's pairs of hexadecimal digits spell. What is no digit is
    /// skipped; a pair whose second character is no digit counts its first one alone ("az" is 0x0A); a single character
    /// at the end is dropped.
    static Data hexStringToData(const std::string& text);
};

}  // namespace vorlane

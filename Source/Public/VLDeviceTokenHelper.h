#pragma once

#include <string>

#include "Public/VLExport.h"
#include "Public/VLTypes.h"

namespace vorlane {

/// Converts push tokens for hosts whose push transport delivers them as hexadecimal strings. Any thread.
class VORLANE_EXPORT VLDeviceTokenHelper {
public:
    /// `hexStringToData:` returns the bytes that the pairs of hexadecimal digits denote. Other characters between pairs
    /// are skipped. A pair with an invalid second character has the value of its first one: "az" is 0x0A. A single
    /// character at the end is ignored.
    static Data hexStringToData(const std::string& string);
};

}  // namespace vorlane

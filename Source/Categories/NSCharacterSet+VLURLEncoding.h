#pragma once

#include <bitset>
#include <optional>
#include <string>

namespace vorlane {

/// The bytes that stay as they are when text is percent-encoded.
using NSCharacterSet = std::bitset<256>;

/// ASCII letters, digits and "-_.!~*'()".
const NSCharacterSet& vl_URIComponentAllowedCharacterSet();
/// ASCII letters, digits and "-_.*"; a blank becomes "%20", never "+".
const NSCharacterSet& vl_formURLEncodingAllowedCharacterSet();
/// ASCII letters and digits.
const NSCharacterSet& alphanumericCharacterSet();

/// `stringByAddingPercentEncodingWithAllowedCharacters:`
std::string stringByAddingPercentEncoding(const std::string& text, const NSCharacterSet& allowed);
/// `stringByRemovingPercentEncoding`; nothing when a "%" is not followed by two hexadecimal digits, or the result is
/// not UTF-8.
std::optional<std::string> stringByRemovingPercentEncoding(const std::string& text);

}  // namespace vorlane

#pragma once

#include <bitset>
#include <optional>
#include <string>

namespace vorlane {

/// The bytes that percent-encoding leaves unchanged.
using NSCharacterSet = std::bitset<256>;

/// ASCII letters, digits and "-_.!~*'()".
const NSCharacterSet& vl_URIComponentAllowedCharacterSet();
/// ASCII letters, digits and "-_.*". A space becomes "%20", never "+".
const NSCharacterSet& vl_formURLEncodingAllowedCharacterSet();
/// ASCII letters and digits.
const NSCharacterSet& alphanumericCharacterSet();

/// `stringByAddingPercentEncodingWithAllowedCharacters:`
std::string stringByAddingPercentEncoding(const std::string& text, const NSCharacterSet& allowed);
/// `stringByRemovingPercentEncoding` returns `nullopt` if a "%" is not followed by two hexadecimal digits, or if the
/// result is not UTF-8.
std::optional<std::string> stringByRemovingPercentEncoding(const std::string& text);

}  // namespace vorlane

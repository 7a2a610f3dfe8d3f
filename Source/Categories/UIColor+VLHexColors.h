#pragma once

#include <cstdint>
#include <string>

#include "Platform/UIColor.h"

namespace vorlane {

/// `vl_colorWithHexString:alpha:` reads "#1a2b3c", "1a2b3c", "#abc" or "abc". A text of any other length is a mistake
/// of the caller, which stops the process; what is no hexadecimal digit counts as none.
UIColor vl_colorWithHexString(const std::string& hexString, float alpha);
/// `vl_colorWithHexString:` gives an opaque colour.
UIColor vl_colorWithHexString(const std::string& hexString);

/// `colorWith8BitRed:green:blue:alpha:` takes the three parts from 0 to 255.
UIColor colorWith8BitRed(std::uint32_t red, std::uint32_t green, std::uint32_t blue, float alpha);

/// `hexStringTransformFromThreeCharacters:` doubles each digit: "#abc" gives "#aabbcc". Any other length comes back as
/// it is.
std::string hexStringTransformFromThreeCharacters(const std::string& hexString);

/// `hexValueToUnsigned:` reads the hexadecimal digits in front, without a "0x"; 0 when there are none.
std::uint32_t hexValueToUnsigned(const std::string& hexValue);

}  // namespace vorlane

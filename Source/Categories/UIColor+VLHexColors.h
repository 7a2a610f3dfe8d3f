#pragma once

#include <cstdint>
#include <string>

#include "Platform/UIColor.h"

namespace vorlane {

/// `vl_colorWithHexString:alpha:` accepts "#1a2b3c", "1a2b3c", "#abc" or "abc". Any other length is a programming error
/// and aborts the process. Each part is read as by `hexValueToUnsigned()`.
UIColor vl_colorWithHexString(const std::string& hexString, float alpha);
/// `vl_colorWithHexString:` returns an opaque colour.
UIColor vl_colorWithHexString(const std::string& hexString);

/// `colorWith8BitRed:green:blue:alpha:` accepts components from 0 to 255.
UIColor colorWith8BitRed(std::uint32_t red, std::uint32_t green, std::uint32_t blue, float alpha);

/// `hexStringTransformFromThreeCharacters:` doubles each digit: "#abc" becomes "#aabbcc". A string of any other length
/// is returned unchanged.
std::string hexStringTransformFromThreeCharacters(const std::string& hexString);

/// `hexValueToUnsigned:` converts the leading hexadecimal digits, without "0x"; returns 0 if there are none.
std::uint32_t hexValueToUnsigned(const std::string& hexValue);

}  // namespace vorlane

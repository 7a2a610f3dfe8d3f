#pragma once

#include <string>
#include <string_view>

namespace vorlane {

/// `vl_unescapeHTML` replaces character references by their characters, once: the named ones of HTML 4 and "&apos;",
/// decimal and hexadecimal ones. Anything else (an unknown name, no ";", no Unicode character) stays unchanged.
std::string vl_unescapeHTML(std::string_view text);

/// `vl_prependHTMLStringWithViewportMetaTag` prepends `VIEWPORT_META_TAG` to the string.
std::string vl_prependHTMLStringWithViewportMetaTag(std::string_view text);

}  // namespace vorlane

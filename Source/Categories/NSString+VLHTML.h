#pragma once

#include <string>
#include <string_view>

namespace vorlane {

/// `vl_unescapeHTML` turns character references back into characters, once: the named ones of HTML 4 with "&apos;",
/// decimal and hexadecimal ones. What is no reference (an unknown name, no ";", no Unicode character) stays as it is.
std::string vl_unescapeHTML(std::string_view text);

/// `vl_prependHTMLStringWithViewportMetaTag` puts `VIEWPORT_META_TAG` in front of the text.
std::string vl_prependHTMLStringWithViewportMetaTag(std::string_view text);

}  // namespace vorlane

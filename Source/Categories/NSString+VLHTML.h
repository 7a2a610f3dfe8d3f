#pragma once

#include <string>
#include <string_view>

namespace vorlane {

/// `vl_prependHTMLStringWithViewportMetaTag` puts `VIEWPORT_META_TAG` in front of the text.
std::string vl_prependHTMLStringWithViewportMetaTag(std::string_view text);

}  // namespace vorlane

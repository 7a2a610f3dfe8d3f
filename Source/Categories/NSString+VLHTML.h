#pragma once

#include <string>

namespace vorlane {

/// Stands in front of every interstitial page.
inline constexpr const char* VIEWPORT_META_TAG = R"(<meta name="viewport" content="initial-scale=1.0" />)";

/// `vl_prependHTMLStringWithViewportMetaTag` gives the page with `VIEWPORT_META_TAG` in front.
std::string vl_prependHTMLStringWithViewportMetaTag(const std::string& html);

}  // namespace vorlane

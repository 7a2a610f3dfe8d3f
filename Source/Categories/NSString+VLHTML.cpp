#include "Categories/NSString+VLHTML.h"

namespace vorlane {

std::string vl_prependHTMLStringWithViewportMetaTag(const std::string& html) { return VIEWPORT_META_TAG + html; }

}  // namespace vorlane

#include "Categories/NSString+VLHTML.h"

#include "Public/VLConstants.h"

namespace vorlane {

std::string vl_prependHTMLStringWithViewportMetaTag(std::string_view text) {
    std::string page(VIEWPORT_META_TAG);
    page.reserve(page.size() + text.size());
    page.append(text);
    return page;
}

}  // namespace vorlane

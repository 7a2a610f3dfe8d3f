#include "Simulator/Service/Http/EncodedText.h"

#include "Categories/NSCharacterSet+VLURLEncoding.h"

namespace vorlane::service {

std::string encodedText(const std::string& text) {
    return stringByAddingPercentEncoding(text, vl_URIComponentAllowedCharacterSet());
}

}  // namespace vorlane::service

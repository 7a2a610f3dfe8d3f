#include "Categories/NSURLRequest+VLHTTPMethod.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Public/VLConstants.h"

namespace vorlane {

namespace {

constexpr std::array<std::string_view, 4> kMethods = {VL_HTTP_GET, VL_HTTP_POST, VL_HTTP_PUT, VL_HTTP_DELETE};

}  // namespace

std::int64_t VLHTTPMethod(const NSURLRequest& request) {
    const auto* const found = std::find(kMethods.begin(), kMethods.end(), request.HTTPMethod);
    return found == kMethods.end() ? -1 : found - kMethods.begin();
}

void setVLHTTPMethod(NSURLRequest& request, std::int64_t method) {
    const bool isKnown = method >= 0 && method < static_cast<std::int64_t>(kMethods.size());
    request.HTTPMethod = kMethods.at(isKnown ? static_cast<std::size_t>(method) : 0);
}

}  // namespace vorlane

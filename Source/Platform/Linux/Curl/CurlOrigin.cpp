#include "Platform/Linux/Curl/CurlOrigin.h"

#include <utility>

#include "Platform/Internal/ASCIICase.h"

namespace vorlane {

namespace {

bool startsWith(std::string_view text, std::string_view start) {
    return isEqualIgnoringCase(text.substr(0, start.size()), start);
}

}  // namespace

std::string originOfURL(std::string_view url) {
    const auto separator = url.find("://");
    const auto start = separator == std::string_view::npos ? 0 : separator + 3;
    std::string_view authority = url.substr(start, url.find_first_of("/?#\\", start) - start);
    if (const auto at = authority.rfind('@'); at != std::string_view::npos) authority.remove_prefix(at + 1);

    std::string origin(url.substr(0, start));
    origin += authority;
    return lowercased(std::move(origin));
}

bool isSecureURL(std::string_view url) { return startsWith(url, "https://"); }

bool isWebURL(std::string_view url) { return isSecureURL(url) || startsWith(url, "http://"); }

}  // namespace vorlane

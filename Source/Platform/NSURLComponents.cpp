#include "Platform/NSURLComponents.h"

#include <curl/curl.h>

#include <array>
#include <memory>
#include <string_view>

namespace vorlane {

namespace {

using CurlURL = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;
using AllowedBytes = std::array<bool, 256>;

constexpr std::string_view kPathCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~!$&'()*+,;=:@/";
// RFC 3986's query characters without those that separate names and values.
constexpr std::string_view kQueryCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~!$'()*,;:@/?";

constexpr AllowedBytes allowedBytes(std::string_view characters) {
    AllowedBytes allowed{};
    for (const char character : characters) allowed[static_cast<unsigned char>(character)] = true;
    return allowed;
}

std::string encoded(std::string_view text, const AllowedBytes& allowed) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string result;
    result.reserve(text.size() + 16);
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (allowed[byte]) {
            result += character;
        } else {
            result += '%';
            result += kDigits[byte >> 4U];
            result += kDigits[byte & 0xFU];
        }
    }
    return result;
}

/// Returns the path as a reference that cannot be read as a scheme or an authority (RFC 3986, 4.2 and 5.3).
std::string safeReference(const std::string& path) {
    if (path.starts_with("//")) return "/." + path;
    if (path.starts_with('/') || path.empty()) return path;
    return "./" + path;
}

}  // namespace

void NSURLComponents::setPath(const std::string& path) {
    static constexpr auto kAllowed = allowedBytes(kPathCharacters);
    encodedPath_ = encoded(path, kAllowed);
}

void NSURLComponents::setQueryItems(const std::vector<NSURLQueryItem>& items) {
    static constexpr auto kAllowed = allowedBytes(kQueryCharacters);
    encodedQuery_.reset();
    for (const auto& item : items) {
        if (encodedQuery_) {
            *encodedQuery_ += '&';
        } else {
            encodedQuery_.emplace();
        }
        *encodedQuery_ += encoded(item.name, kAllowed) + "=" + encoded(item.value, kAllowed);
    }
}

NSURL NSURLComponents::URLRelativeToURL(const NSURL& base) const {
    std::string reference = safeReference(encodedPath_);
    if (encodedQuery_) reference += "?" + *encodedQuery_;
    if (reference.empty()) return base;
    // A base has no fragment. libcurl would read slashes in it as the path's.
    const auto baseText = base.absoluteString().substr(0, base.absoluteString().find('#'));
    const CurlURL url(curl_url(), &curl_url_cleanup);
    constexpr unsigned kFlags = CURLU_NON_SUPPORT_SCHEME;
    char* resolved = nullptr;
    const bool isResolved = curl_url_set(url.get(), CURLUPART_URL, baseText.c_str(), kFlags) == CURLUE_OK &&
                            curl_url_set(url.get(), CURLUPART_URL, reference.c_str(), kFlags) == CURLUE_OK &&
                            curl_url_get(url.get(), CURLUPART_URL, &resolved, 0) == CURLUE_OK;
    if (!isResolved) return base;
    const std::unique_ptr<char, decltype(&curl_free)> text(resolved, &curl_free);
    return NSURL(text.get());
}

}  // namespace vorlane

#include "Platform/Linux/Curl/CurlHost.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <memory>

#include "Platform/Internal/ASCIICase.h"
#include "Platform/Linux/Curl/CurlOrigin.h"

namespace vorlane {

namespace {

using ParsedURL = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

constexpr const char* kUsualProxyPort = "1080";

std::optional<std::string> partOf(const ParsedURL& url, CURLUPart part, unsigned flags = 0) {
    char* text = nullptr;
    if (curl_url_get(url.get(), part, &text, flags) != CURLUE_OK) return std::nullopt;
    const std::unique_ptr<char, decltype(&curl_free)> owner(text, &curl_free);
    return std::string(text);
}

ParsedURL parsed(const std::string& url, unsigned flags) {
    ParsedURL result(curl_url(), &curl_url_cleanup);
    if (curl_url_set(result.get(), CURLUPART_URL, url.c_str(), flags) != CURLUE_OK) result.reset();
    return result;
}

bool isNumeric(const std::string& name) {
    in_addr address{};
    return name.starts_with('[') || inet_pton(AF_INET, name.c_str(), &address) == 1;
}

}  // namespace

std::optional<CurlHost> CurlHost::ofURL(const std::string& url) {
    const auto parts = parsed(url, 0);
    if (!parts) return std::nullopt;
    auto name = partOf(parts, CURLUPART_HOST);
    auto port = partOf(parts, CURLUPART_PORT, CURLU_DEFAULT_PORT);
    if (!name || !port) return std::nullopt;
    return CurlHost{std::move(*name), std::move(*port)};
}

std::optional<CurlHost> CurlHost::ofProxy(const std::string& proxy) {
    const auto parts = parsed(proxy, CURLU_GUESS_SCHEME | CURLU_NON_SUPPORT_SCHEME);
    if (!parts) return std::nullopt;
    auto name = partOf(parts, CURLUPART_HOST);
    if (!name) return std::nullopt;
    const char* const usualPort = isSecureURL(proxy) ? "443" : kUsualProxyPort;
    return CurlHost{std::move(*name), partOf(parts, CURLUPART_PORT).value_or(usualPort)};
}

bool CurlHost::needsLookUp() const {
    const std::string lower = lowercased(name);
    // libcurl itself knows the addresses of the local host.
    return !isNumeric(lower) && lower != "localhost" && !lower.ends_with(".localhost");
}

std::string CurlHost::entryWithAddresses(const std::vector<std::string>& addresses) const {
    // With the plus sign the entry expires like one that libcurl looked up itself.
    return fmt::format("+{}:{}:{}", name, port, fmt::join(addresses, ","));
}

std::optional<std::string> proxyFromEnvironment(const std::string& url, const EnvironmentLookup& lookup) {
    // Not "HTTP_PROXY", which a CGI program's client could set.
    auto proxy = isSecureURL(url) ? lookup("https_proxy") : lookup("http_proxy");
    if (!proxy && isSecureURL(url)) proxy = lookup("HTTPS_PROXY");
    if (!proxy) proxy = lookup("all_proxy");
    if (!proxy) proxy = lookup("ALL_PROXY");
    return proxy;
}

}  // namespace vorlane

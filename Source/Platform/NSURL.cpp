#include "Platform/NSURL.h"

#include <curl/curl.h>

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <string_view>

namespace vorlane {

namespace {

using CurlURL = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

/// The components of a URL, as written (RFC 3986, appendix B).
struct Pieces {
    std::string_view scheme;
    std::optional<std::string_view> authority;
    std::string_view path;
    std::optional<std::string_view> query;
};

Pieces piecesOf(std::string_view text) {
    Pieces pieces;
    const auto colon = text.find(':');
    pieces.scheme = text.substr(0, colon);
    text.remove_prefix(std::min(colon + 1, text.size()));
    text = text.substr(0, text.find('#'));
    if (const auto mark = text.find('?'); mark != std::string_view::npos) {
        pieces.query = text.substr(mark + 1);
        text = text.substr(0, mark);
    }
    if (text.starts_with("//")) {
        text.remove_prefix(2);
        const auto end = std::min(text.find('/'), text.size());
        pieces.authority = text.substr(0, end);
        text.remove_prefix(end);
    }
    pieces.path = text;
    return pieces;
}

bool isScheme(std::string_view text) {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    constexpr std::string_view kOthers = "0123456789+-.";
    if (text.empty() || kLetters.find(text.front()) == std::string_view::npos) return false;
    return std::all_of(text.begin(), text.end(), [&](char character) {
        return kLetters.find(character) != std::string_view::npos || kOthers.find(character) != std::string_view::npos;
    });
}

/// Bytes that no URL contains: controls, blanks, and the delimiters that RFC 3986 excludes.
bool hasForbiddenByte(std::string_view text) {
    constexpr std::string_view kExcluded = "\"<>\\^`{|}";
    return std::any_of(text.begin(), text.end(), [&](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte <= 0x20 || byte >= 0x7F || kExcluded.find(character) != std::string_view::npos;
    });
}

bool curlAccepts(const std::string& text) {
    const CurlURL url(curl_url(), &curl_url_cleanup);
    return url && curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_NON_SUPPORT_SCHEME | CURLU_PATH_AS_IS) ==
                      CURLUE_OK;
}

std::string_view withoutUserInfo(std::string_view authority) {
    const auto at = authority.rfind('@');
    return at == std::string_view::npos ? authority : authority.substr(at + 1);
}

/// Finds the port's colon. The colons of an IPv6 address are in brackets.
std::size_t portColon(std::string_view hostAndPort) {
    const auto bracket = hostAndPort.rfind(']');
    return hostAndPort.find(':', bracket == std::string_view::npos ? 0 : bracket);
}

/// The number after the colon; `nullopt` if it is missing or not a valid port.
std::optional<std::int64_t> portOf(std::string_view hostAndPort) {
    const auto colon = portColon(hostAndPort);
    if (colon == std::string_view::npos) return std::nullopt;
    const auto digits = hostAndPort.substr(colon + 1);
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
    return port;
}

/// Whether the string is a valid host and port for any scheme (RFC 3986, 3.2). Outside http, a host may contain
/// characters that no host name can, as in "app://item=5".
bool isHostAndPort(std::string_view hostAndPort) {
    const auto colon = portColon(hostAndPort);
    const auto host = hostAndPort.substr(0, colon);
    const bool isBracketed = host.starts_with('[') && host.ends_with(']');
    const auto name = isBracketed ? host.substr(1, host.size() - 2) : host;
    if (name.find_first_of("[]@") != std::string_view::npos) return false;
    return colon == std::string_view::npos || colon + 1 == hostAndPort.size() || portOf(hostAndPort).has_value();
}

bool isHTTP(std::string_view scheme) {
    const auto is = [scheme](std::string_view name) {
        return scheme.size() == name.size() && strncasecmp(scheme.data(), name.data(), name.size()) == 0;
    };
    return is("http") || is("https");
}

}  // namespace

std::optional<NSURL> NSURL::URLWithString(const std::string& text) {
    const auto colon = text.find(':');
    if (colon == std::string::npos || !isScheme(std::string_view(text).substr(0, colon)) || hasForbiddenByte(text)) {
        return std::nullopt;
    }
    const auto pieces = piecesOf(text);
    if (pieces.authority && !pieces.authority->empty()) {
        const bool isAuthority =
            isHTTP(pieces.scheme) ? curlAccepts(text) : isHostAndPort(withoutUserInfo(*pieces.authority));
        if (!isAuthority) return std::nullopt;
    }
    return NSURL(text);
}

std::string NSURL::scheme() const { return std::string(piecesOf(absoluteString_).scheme); }

std::optional<std::string> NSURL::host() const {
    const auto pieces = piecesOf(absoluteString_);
    if (!pieces.authority) return std::nullopt;
    const auto hostAndPort = withoutUserInfo(*pieces.authority);
    return std::string(hostAndPort.substr(0, portColon(hostAndPort)));
}

std::optional<std::int64_t> NSURL::port() const {
    const auto pieces = piecesOf(absoluteString_);
    if (!pieces.authority) return std::nullopt;
    return portOf(withoutUserInfo(*pieces.authority));
}

std::string NSURL::path() const { return std::string(piecesOf(absoluteString_).path); }

std::optional<std::string> NSURL::query() const {
    const auto pieces = piecesOf(absoluteString_);
    if (!pieces.query) return std::nullopt;
    return std::string(*pieces.query);
}

}  // namespace vorlane

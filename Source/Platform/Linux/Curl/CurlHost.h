#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Device/LinuxEnvironment.h"

namespace vorlane {

/// One end of a connection that libcurl makes: a server or a proxy.
struct CurlHost {
    /// A name or a numeric address; an IPv6 address in brackets.
    std::string name;
    std::string port;

    /// The server of an http or https URL.
    static std::optional<CurlHost> ofURL(const std::string& url);
    /// The proxy named by `proxy`: a URL, or a host with or without a port.
    static std::optional<CurlHost> ofProxy(const std::string& proxy);

    /// Whether the address has to be looked up: the name is neither numeric nor the local host.
    bool needsLookUp() const;
    /// The entry for `CURLOPT_RESOLVE` that puts the addresses into libcurl's cache.
    std::string entryWithAddresses(const std::vector<std::string>& addresses) const;
};

/// The proxy that the environment names for the URL, in libcurl's order: the variable of the scheme ("http_proxy";
/// "https_proxy", "HTTPS_PROXY"), then "all_proxy" and "ALL_PROXY". Does not consider "no_proxy".
std::optional<std::string> proxyFromEnvironment(const std::string& url, const EnvironmentLookup& lookup);

}  // namespace vorlane

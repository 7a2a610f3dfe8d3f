#pragma once

#include <string>
#include <string_view>

namespace vorlane {

/// The scheme, host and port of a URL in lower case ("https://host:8443"), without user name and password.
std::string originOfURL(std::string_view url);

/// Whether the scheme of the URL or origin is https.
bool isSecureURL(std::string_view url);
/// Whether the scheme of the URL or origin is http or https.
bool isWebURL(std::string_view url);

}  // namespace vorlane

#pragma once

#include <string>
#include <string_view>

namespace vorlane {

/// Where a URL leads: its scheme, host and port in lower case ("https://host:8443"), without name and password.
std::string originOfURL(std::string_view url);

/// Whether the URL or origin is one of https.
bool isSecureURL(std::string_view url);
/// Whether the URL or origin is one of http or https.
bool isWebURL(std::string_view url);

}  // namespace vorlane

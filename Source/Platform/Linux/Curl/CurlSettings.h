#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "Platform/Linux/Curl/CurlCertificates.h"

namespace vorlane {

/// What all requests of a session have in common.
struct CurlSettings {
    /// A request without progress for this long has timed out.
    std::chrono::milliseconds timeout{60000};
    CurlCertificates certificates = {};
    /// The proxy as a URL; empty for none; `nullopt` for what the environment says.
    std::optional<std::string> proxy = std::nullopt;
};

}  // namespace vorlane

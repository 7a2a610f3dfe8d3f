#pragma once

#include <string>

#include "Platform/Linux/Device/LinuxEnvironment.h"

namespace vorlane {

/// The certificates that servers are verified with.
struct CurlCertificates {
    /// A PEM file; empty for none.
    std::string file;
    /// A folder of certificates named by their hashes, as OpenSSL reads it; empty for none.
    std::string folder;

    /// Returns these places if one is set, else those named by `SSL_CERT_FILE` and `SSL_CERT_DIR`, else the file or
    /// folder of a common distribution. Both are empty if none exists.
    CurlCertificates located(const EnvironmentLookup& lookup) const;
};

}  // namespace vorlane

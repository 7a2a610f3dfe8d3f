#pragma once

#include <string>

#include "Platform/Linux/Device/LinuxEnvironment.h"

namespace vorlane {

/// Where the certificates are that servers are checked against.
struct CurlCertificates {
    /// A PEM file; empty for none.
    std::string file;
    /// A folder in OpenSSL's layout; empty for none.
    std::string folder;

    /// These places when there is one; else those that `SSL_CERT_FILE` and `SSL_CERT_DIR` name; else where the common
    /// distributions keep theirs, one file or one folder. Both empty when nothing is found.
    CurlCertificates located(const EnvironmentLookup& lookup) const;
};

}  // namespace vorlane

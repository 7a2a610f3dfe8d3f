#include "Platform/Linux/Curl/CurlCertificates.h"

#include <unistd.h>

#include <array>

namespace vorlane {

namespace {

constexpr std::array kFiles{
    "/etc/ssl/certs/ca-certificates.crt",                 // Debian, Ubuntu, Arch, Gentoo
    "/etc/pki/tls/certs/ca-bundle.crt",                   // Fedora, RHEL
    "/etc/pki/ca-trust/extracted/pem/tls-ca-bundle.pem",  // CentOS
    "/etc/ssl/ca-bundle.pem",                             // openSUSE
    "/etc/ssl/cert.pem",                                  // Alpine
};
constexpr std::array kFolders{"/etc/ssl/certs", "/etc/pki/tls/certs"};

template <class Paths>
std::string firstReadable(const Paths& paths) {
    for (const char* path : paths) {
        if (access(path, R_OK) == 0) return path;
    }
    return {};
}

}  // namespace

CurlCertificates CurlCertificates::located(const EnvironmentLookup& lookup) const {
    if (!file.empty() || !folder.empty()) return *this;
    const CurlCertificates named{lookup("SSL_CERT_FILE").value_or(""), lookup("SSL_CERT_DIR").value_or("")};
    if (!named.file.empty() || !named.folder.empty()) return named;
    const CurlCertificates usual{firstReadable(kFiles), {}};
    return usual.file.empty() ? CurlCertificates{{}, firstReadable(kFolders)} : usual;
}

}  // namespace vorlane

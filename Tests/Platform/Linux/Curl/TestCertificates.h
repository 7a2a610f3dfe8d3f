#pragma once

#include <openssl/ssl.h>

#include <memory>
#include <string>

namespace vorlane {

/// Certificates made for one test: an authority, and server certificates that it has signed or not.
class TestCertificates {
public:
    /// The content of a server's certificate.
    struct Subject {
        /// The IP address it is issued for.
        std::string address = "127.0.0.1";
        /// Its validity, in seconds from now.
        long notBefore = -3600;
        long notAfter = 3600;
        /// Signed by the authority, or else by itself.
        bool isSignedByAuthority = true;
    };
    using Context = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;

    TestCertificates();
    /// Removes the file.
    ~TestCertificates();

    TestCertificates(const TestCertificates&) = delete;
    TestCertificates& operator=(const TestCertificates&) = delete;

    /// Makes the context of a TLS server with such a certificate.
    Context serverContext(const Subject& subject) const;
    Context serverContext() const { return serverContext(Subject()); }
    /// The path of the authority's certificate, a PEM file.
    const std::string& authorityFile() const { return authorityFile_; }

private:
    using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
    using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

    static Key makeKey();
    static Certificate makeCertificate(const Subject& subject, EVP_PKEY* key);

    const Key authorityKey_;
    const Certificate authority_;
    std::string authorityFile_;
};

}  // namespace vorlane

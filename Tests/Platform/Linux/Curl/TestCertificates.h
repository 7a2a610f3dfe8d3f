#pragma once

#include <openssl/ssl.h>

#include <memory>
#include <string>

namespace vorlane {

/// Certificates made for one test: an authority of its own, and servers with certificates by it or without its
/// blessing.
class TestCertificates {
public:
    /// What a server's certificate says.
    struct Subject {
        /// An IP address that it is for.
        std::string address = "127.0.0.1";
        /// When it is good, in seconds from now.
        long notBefore = -3600;
        long notAfter = 3600;
        /// Whether the authority has signed it; else it has signed itself.
        bool isSignedByAuthority = true;
    };
    using Context = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;

    TestCertificates();
    /// Removes the file.
    ~TestCertificates();

    TestCertificates(const TestCertificates&) = delete;
    TestCertificates& operator=(const TestCertificates&) = delete;

    /// What a TLS server needs to show such a certificate.
    Context serverContext(const Subject& subject) const;
    Context serverContext() const { return serverContext(Subject()); }
    /// The PEM file of the authority's certificate.
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

#include "Tests/Platform/Linux/Curl/TestCertificates.h"

#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>

namespace vorlane {

namespace {

void setName(X509_NAME* name, const std::string& text) {
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>(text.c_str()), -1, -1,
                               0);
}

void addExtension(X509* certificate, int kind, const std::string& value) {
    X509_EXTENSION* const extension = X509V3_EXT_conf_nid(nullptr, nullptr, kind, value.c_str());
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

std::uint32_t randomNumber() {
    std::uint32_t number = 0;
    RAND_bytes(reinterpret_cast<unsigned char*>(&number), sizeof number);
    return number;
}

/// Authorities need different names: OpenSSL finds a certificate's authority by name.
std::string nameOf(const TestCertificates::Subject& subject) {
    return subject.address.empty() ? "Test authority " + std::to_string(randomNumber()) : "Test server";
}

}  // namespace

TestCertificates::TestCertificates()
    : authorityKey_(makeKey()), authority_(makeCertificate({.address = ""}, authorityKey_.get())) {
    X509_set_issuer_name(authority_.get(), X509_get_subject_name(authority_.get()));
    addExtension(authority_.get(), NID_basic_constraints, "critical,CA:TRUE");
    X509_sign(authority_.get(), authorityKey_.get(), EVP_sha256());

    authorityFile_ = (std::filesystem::temp_directory_path() / "vorlane-authority-XXXXXX").string();
    std::FILE* const file = fdopen(mkstemp(authorityFile_.data()), "w");
    PEM_write_X509(file, authority_.get());
    std::fclose(file);
}

TestCertificates::~TestCertificates() { std::filesystem::remove(authorityFile_); }

TestCertificates::Key TestCertificates::makeKey() { return {EVP_EC_gen("P-256"), &EVP_PKEY_free}; }

TestCertificates::Certificate TestCertificates::makeCertificate(const Subject& subject, EVP_PKEY* key) {
    Certificate certificate(X509_new(), &X509_free);
    X509_set_version(certificate.get(), X509_VERSION_3);
    ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate.get()), randomNumber());
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), subject.notBefore);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), subject.notAfter);
    X509_set_pubkey(certificate.get(), key);
    setName(X509_get_subject_name(certificate.get()), nameOf(subject));
    if (!subject.address.empty()) addExtension(certificate.get(), NID_subject_alt_name, "IP:" + subject.address);
    return certificate;
}

TestCertificates::Context TestCertificates::serverContext(const Subject& subject) const {
    const Key key = makeKey();
    const Certificate certificate = makeCertificate(subject, key.get());
    const X509* const issuer = subject.isSignedByAuthority ? authority_.get() : certificate.get();
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(issuer));
    X509_sign(certificate.get(), subject.isSignedByAuthority ? authorityKey_.get() : key.get(), EVP_sha256());

    Context context(SSL_CTX_new(TLS_server_method()), &SSL_CTX_free);
    SSL_CTX_use_certificate(context.get(), certificate.get());
    SSL_CTX_use_PrivateKey(context.get(), key.get());
    return context;
}

}  // namespace vorlane

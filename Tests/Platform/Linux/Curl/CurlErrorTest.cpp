#include "Platform/Linux/Curl/CurlError.h"

#include <gtest/gtest.h>
#include <openssl/x509_vfy.h>

#include <cerrno>

namespace vorlane {
namespace {

NSURLError codeOf(CURLcode code, long verification = 0, long systemError = 0) {
    CurlFailure failure;
    failure.code = code;
    failure.verification = verification;
    failure.systemError = systemError;
    return urlErrorCode(failure);
}

TEST(CurlErrorTest, EachFailureHasItsCode) {
    EXPECT_EQ(codeOf(CURLE_OPERATION_TIMEDOUT), NSURLError::TimedOut);
    EXPECT_EQ(codeOf(CURLE_URL_MALFORMAT), NSURLError::BadURL);
    EXPECT_EQ(codeOf(CURLE_UNSUPPORTED_PROTOCOL), NSURLError::UnsupportedURL);
    EXPECT_EQ(codeOf(CURLE_COULDNT_RESOLVE_HOST), NSURLError::CannotFindHost);
    EXPECT_EQ(codeOf(CURLE_COULDNT_RESOLVE_PROXY), NSURLError::CannotFindHost);
    EXPECT_EQ(codeOf(CURLE_GOT_NOTHING), NSURLError::NetworkConnectionLost);
    EXPECT_EQ(codeOf(CURLE_PARTIAL_FILE), NSURLError::NetworkConnectionLost);
    EXPECT_EQ(codeOf(CURLE_SEND_ERROR), NSURLError::NetworkConnectionLost);
    EXPECT_EQ(codeOf(CURLE_RECV_ERROR), NSURLError::NetworkConnectionLost);
    EXPECT_EQ(codeOf(CURLE_HTTP2), NSURLError::NetworkConnectionLost);
    EXPECT_EQ(codeOf(CURLE_HTTP2_STREAM), NSURLError::NetworkConnectionLost);
    EXPECT_EQ(codeOf(CURLE_TOO_MANY_REDIRECTS), NSURLError::HttpTooManyRedirects);
    EXPECT_EQ(codeOf(CURLE_WEIRD_SERVER_REPLY), NSURLError::BadServerResponse);
    EXPECT_EQ(codeOf(CURLE_BAD_CONTENT_ENCODING), NSURLError::CannotDecodeContentData);
    EXPECT_EQ(codeOf(CURLE_FILESIZE_EXCEEDED), NSURLError::DataLengthExceedsMaximum);
    EXPECT_EQ(codeOf(CURLE_SSL_CONNECT_ERROR), NSURLError::SecureConnectionFailed);
    EXPECT_EQ(codeOf(CURLE_SSL_CACERT_BADFILE), NSURLError::SecureConnectionFailed);
    EXPECT_EQ(codeOf(CURLE_SSL_CERTPROBLEM), NSURLError::ClientCertificateRejected);
    EXPECT_EQ(codeOf(CURLE_SSL_CLIENTCERT), NSURLError::ClientCertificateRequired);
    EXPECT_EQ(codeOf(CURLE_OUT_OF_MEMORY), NSURLError::Unknown);
}

TEST(CurlErrorTest, UnreachableNetworkMeansOffline) {
    EXPECT_EQ(codeOf(CURLE_COULDNT_CONNECT, 0, ECONNREFUSED), NSURLError::CannotConnectToHost);
    EXPECT_EQ(codeOf(CURLE_COULDNT_CONNECT, 0, EHOSTUNREACH), NSURLError::CannotConnectToHost);
    EXPECT_EQ(codeOf(CURLE_COULDNT_CONNECT, 0, ENETUNREACH), NSURLError::NotConnectedToInternet);
    EXPECT_EQ(codeOf(CURLE_COULDNT_CONNECT, 0, ENETDOWN), NSURLError::NotConnectedToInternet);
}

TEST(CurlErrorTest, EachCertificateFaultHasItsCode) {
    EXPECT_EQ(codeOf(CURLE_PEER_FAILED_VERIFICATION, X509_V_ERR_CERT_HAS_EXPIRED),
              NSURLError::ServerCertificateHasBadDate);
    EXPECT_EQ(codeOf(CURLE_PEER_FAILED_VERIFICATION, X509_V_ERR_CERT_NOT_YET_VALID),
              NSURLError::ServerCertificateNotYetValid);
    EXPECT_EQ(codeOf(CURLE_PEER_FAILED_VERIFICATION, X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN),
              NSURLError::ServerCertificateHasUnknownRoot);
    EXPECT_EQ(codeOf(CURLE_PEER_FAILED_VERIFICATION, X509_V_ERR_CERT_REVOKED), NSURLError::ServerCertificateUntrusted);
    EXPECT_EQ(codeOf(CURLE_PEER_FAILED_VERIFICATION), NSURLError::ServerCertificateUntrusted);
}

TEST(CurlErrorTest, EmptyDescriptionBecomesTheCodesName) {
    CurlFailure failure;
    failure.code = CURLE_RECV_ERROR;
    const auto url = *NSURL::URLWithString("https://host/path");
    EXPECT_EQ(makeURLError(failure, url).localizedDescription(), curl_easy_strerror(CURLE_RECV_ERROR));
    failure.text = "Connection reset by peer";
    EXPECT_EQ(makeURLError(failure, url), NSError("NSURLErrorDomain", -1005,
                                                  {{"NSLocalizedDescription", "Connection reset by peer"},
                                                   {"NSErrorFailingURLStringKey", "https://host/path"}}));
}

}  // namespace
}  // namespace vorlane

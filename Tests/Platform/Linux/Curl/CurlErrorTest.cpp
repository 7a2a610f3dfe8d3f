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
    EXPECT_EQ(codeOf(CURLE_OPERATION_TIMEDOUT), NSURLError::timedOut);
    EXPECT_EQ(codeOf(CURLE_URL_MALFORMAT), NSURLError::badURL);
    EXPECT_EQ(codeOf(CURLE_UNSUPPORTED_PROTOCOL), NSURLError::unsupportedURL);
    EXPECT_EQ(codeOf(CURLE_COULDNT_RESOLVE_HOST), NSURLError::cannotFindHost);
    EXPECT_EQ(codeOf(CURLE_COULDNT_RESOLVE_PROXY), NSURLError::cannotFindHost);
    EXPECT_EQ(codeOf(CURLE_GOT_NOTHING), NSURLError::networkConnectionLost);
    EXPECT_EQ(codeOf(CURLE_PARTIAL_FILE), NSURLError::networkConnectionLost);
    EXPECT_EQ(codeOf(CURLE_SEND_ERROR), NSURLError::networkConnectionLost);
    EXPECT_EQ(codeOf(CURLE_RECV_ERROR), NSURLError::networkConnectionLost);
    EXPECT_EQ(codeOf(CURLE_HTTP2), NSURLError::networkConnectionLost);
    EXPECT_EQ(codeOf(CURLE_HTTP2_STREAM), NSURLError::networkConnectionLost);
    EXPECT_EQ(codeOf(CURLE_TOO_MANY_REDIRECTS), NSURLError::httpTooManyRedirects);
    EXPECT_EQ(codeOf(CURLE_WEIRD_SERVER_REPLY), NSURLError::badServerResponse);
    EXPECT_EQ(codeOf(CURLE_BAD_CONTENT_ENCODING), NSURLError::cannotDecodeContentData);
    EXPECT_EQ(codeOf(CURLE_FILESIZE_EXCEEDED), NSURLError::dataLengthExceedsMaximum);
    EXPECT_EQ(codeOf(CURLE_SSL_CONNECT_ERROR), NSURLError::secureConnectionFailed);
    EXPECT_EQ(codeOf(CURLE_SSL_CACERT_BADFILE), NSURLError::secureConnectionFailed);
    EXPECT_EQ(codeOf(CURLE_SSL_CERTPROBLEM), NSURLError::clientCertificateRejected);
    EXPECT_EQ(codeOf(CURLE_SSL_CLIENTCERT), NSURLError::clientCertificateRequired);
    EXPECT_EQ(codeOf(CURLE_OUT_OF_MEMORY), NSURLError::unknown);
}

TEST(CurlErrorTest, UnreachableNetworkMeansOffline) {
    EXPECT_EQ(codeOf(CURLE_COULDNT_CONNECT, 0, ECONNREFUSED), NSURLError::cannotConnectToHost);
    EXPECT_EQ(codeOf(CURLE_COULDNT_CONNECT, 0, EHOSTUNREACH), NSURLError::cannotConnectToHost);
    EXPECT_EQ(codeOf(CURLE_COULDNT_CONNECT, 0, ENETUNREACH), NSURLError::notConnectedToInternet);
    EXPECT_EQ(codeOf(CURLE_COULDNT_CONNECT, 0, ENETDOWN), NSURLError::notConnectedToInternet);
}

TEST(CurlErrorTest, EachCertificateFaultHasItsCode) {
    EXPECT_EQ(codeOf(CURLE_PEER_FAILED_VERIFICATION, X509_V_ERR_CERT_HAS_EXPIRED),
              NSURLError::serverCertificateHasBadDate);
    EXPECT_EQ(codeOf(CURLE_PEER_FAILED_VERIFICATION, X509_V_ERR_CERT_NOT_YET_VALID),
              NSURLError::serverCertificateNotYetValid);
    EXPECT_EQ(codeOf(CURLE_PEER_FAILED_VERIFICATION, X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN),
              NSURLError::serverCertificateHasUnknownRoot);
    EXPECT_EQ(codeOf(CURLE_PEER_FAILED_VERIFICATION, X509_V_ERR_CERT_REVOKED), NSURLError::serverCertificateUntrusted);
    EXPECT_EQ(codeOf(CURLE_PEER_FAILED_VERIFICATION), NSURLError::serverCertificateUntrusted);
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

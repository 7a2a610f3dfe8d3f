#include "Platform/Linux/Curl/CurlError.h"

#include <openssl/x509_vfy.h>

#include <cerrno>

namespace vorlane {

namespace {

NSURLError certificateError(long verification) {
    switch (verification) {
        case X509_V_ERR_CERT_HAS_EXPIRED:
            return NSURLError::ServerCertificateHasBadDate;
        case X509_V_ERR_CERT_NOT_YET_VALID:
            return NSURLError::ServerCertificateNotYetValid;
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
        case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
        case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
        case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
        case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
            return NSURLError::ServerCertificateHasUnknownRoot;
        // OpenSSL accepts a certificate for another host: libcurl compares the names.
        default:
            return NSURLError::ServerCertificateUntrusted;
    }
}

NSURLError connectError(long systemError) {
    const bool isOffline = systemError == ENETUNREACH || systemError == ENETDOWN;
    return isOffline ? NSURLError::NotConnectedToInternet : NSURLError::CannotConnectToHost;
}

}  // namespace

NSError makeURLError(NSURLError code, const std::string& description, const NSURL& url) {
    return NSError(
        NSURLErrorDomain, static_cast<std::int64_t>(code),
        {{NSLocalizedDescriptionKey, description}, {NSURLErrorFailingURLStringErrorKey, url.absoluteString()}});
}

NSURLError urlErrorCode(const CurlFailure& failure) {
    if (failure.isTooLong) return NSURLError::DataLengthExceedsMaximum;
    if (failure.isGarbage) return NSURLError::BadServerResponse;
    switch (failure.code) {
        case CURLE_OPERATION_TIMEDOUT:
            return NSURLError::TimedOut;
        case CURLE_URL_MALFORMAT:
            return NSURLError::BadURL;
        case CURLE_UNSUPPORTED_PROTOCOL:
            return NSURLError::UnsupportedURL;
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_RESOLVE_PROXY:
            return NSURLError::CannotFindHost;
        case CURLE_COULDNT_CONNECT:
            return connectError(failure.systemError);
        case CURLE_GOT_NOTHING:
        case CURLE_PARTIAL_FILE:
        case CURLE_SEND_ERROR:
        case CURLE_RECV_ERROR:
        case CURLE_HTTP2:
        case CURLE_HTTP2_STREAM:
            return NSURLError::NetworkConnectionLost;
        case CURLE_TOO_MANY_REDIRECTS:
            return NSURLError::HttpTooManyRedirects;
        case CURLE_WEIRD_SERVER_REPLY:
            return NSURLError::BadServerResponse;
        case CURLE_BAD_CONTENT_ENCODING:
            return NSURLError::CannotDecodeContentData;
        case CURLE_FILESIZE_EXCEEDED:
            return NSURLError::DataLengthExceedsMaximum;
        case CURLE_PEER_FAILED_VERIFICATION:
            return certificateError(failure.verification);
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_SSL_CIPHER:
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_SSL_ISSUER_ERROR:
        case CURLE_SSL_ENGINE_INITFAILED:
        case CURLE_USE_SSL_FAILED:
            return NSURLError::SecureConnectionFailed;
        case CURLE_SSL_CERTPROBLEM:
            return NSURLError::ClientCertificateRejected;
        case CURLE_SSL_CLIENTCERT:
            return NSURLError::ClientCertificateRequired;
        default:
            return NSURLError::Unknown;
    }
}

NSError makeURLError(const CurlFailure& failure, const NSURL& url) {
    return makeURLError(urlErrorCode(failure), failure.text.empty() ? curl_easy_strerror(failure.code) : failure.text,
                        url);
}

}  // namespace vorlane

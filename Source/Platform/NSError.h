#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLTypes.h"

namespace vorlane {

/// The user-info key of an error's description.
inline constexpr const char* NSLocalizedDescriptionKey = "NSLocalizedDescription";

/// The domain of transport errors, with the codes of `NSURLError`.
inline constexpr const char* NSURLErrorDomain = "NSURLErrorDomain";
/// The domain of errors in reading data, with the codes of `NSCocoaError`.
inline constexpr const char* NSCocoaErrorDomain = "NSCocoaErrorDomain";

/// Codes in `NSURLErrorDomain`.
enum class NSURLError : std::int64_t {
    unknown = -1,
    cancelled = -999,
    badURL = -1000,
    timedOut = -1001,
    unsupportedURL = -1002,
    cannotFindHost = -1003,
    cannotConnectToHost = -1004,
    networkConnectionLost = -1005,
    httpTooManyRedirects = -1007,
    notConnectedToInternet = -1009,
    badServerResponse = -1011,
    cannotDecodeContentData = -1016,
    dataLengthExceedsMaximum = -1103,
    secureConnectionFailed = -1200,
    serverCertificateHasBadDate = -1201,
    serverCertificateUntrusted = -1202,
    serverCertificateHasUnknownRoot = -1203,
    serverCertificateNotYetValid = -1204,
    clientCertificateRejected = -1205,
    clientCertificateRequired = -1206,
};

/// The code in `NSCocoaErrorDomain` of data in the wrong format.
inline constexpr std::int64_t NSPropertyListReadCorruptError = 3840;

/// An error: a domain, a code in that domain, and additional information. An immutable value.
class VORLANE_EXPORT NSError {
public:
    NSError(std::string domain, std::int64_t code);
    NSError(std::string domain, std::int64_t code, Dictionary userInfo);

    const std::string& domain() const { return domain_; }
    std::int64_t code() const { return code_; }
    const Dictionary& userInfo() const;

    /// Returns the string under `NSLocalizedDescriptionKey`; without one, a sentence with the domain and the code.
    std::string localizedDescription() const;

    /// Returns `Error Domain=D Code=C "description"`.
    std::string description() const;

    bool operator==(const NSError& other) const;

private:
    std::string domain_;
    std::int64_t code_;
    // Null for an empty dictionary.
    std::shared_ptr<const Dictionary> userInfo_;
};

}  // namespace vorlane

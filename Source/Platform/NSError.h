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
    Unknown = -1,
    Cancelled = -999,
    BadURL = -1000,
    TimedOut = -1001,
    UnsupportedURL = -1002,
    CannotFindHost = -1003,
    CannotConnectToHost = -1004,
    NetworkConnectionLost = -1005,
    HttpTooManyRedirects = -1007,
    NotConnectedToInternet = -1009,
    BadServerResponse = -1011,
    CannotDecodeContentData = -1016,
    DataLengthExceedsMaximum = -1103,
    SecureConnectionFailed = -1200,
    ServerCertificateHasBadDate = -1201,
    ServerCertificateUntrusted = -1202,
    ServerCertificateHasUnknownRoot = -1203,
    ServerCertificateNotYetValid = -1204,
    ClientCertificateRejected = -1205,
    ClientCertificateRequired = -1206,
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

#pragma once

#include <curl/curl.h>

#include <string>

#include "Platform/NSError.h"
#include "Platform/NSURL.h"

namespace vorlane {

/// The user-info key of the failed URL, a string.
inline constexpr const char* NSURLErrorFailingURLStringErrorKey = "NSErrorFailingURLStringKey";

/// What libcurl reports about a failed transfer.
struct CurlFailure {
    CURLcode code = CURLE_OK;
    /// libcurl's description; may be empty.
    std::string text;
    /// OpenSSL's result for the certificate chain (`X509_V_…`); 0 if it found no fault.
    long verification = 0;
    /// The system's error number of a failed connection attempt, or 0.
    long systemError = 0;
    /// Whether the response exceeded a limit of the session.
    bool isTooLong = false;
    /// Whether the response does not begin like HTTP.
    bool isGarbage = false;
};

/// Returns an error in `NSURLErrorDomain` with the description and the failed URL.
NSError makeURLError(NSURLError code, const std::string& description, const NSURL& url);

/// Returns the code in `NSURLErrorDomain` for the failure.
NSURLError urlErrorCode(const CurlFailure& failure);

/// Returns the failure as an error. The description is `failure.text`, or libcurl's name of the code if that is empty.
NSError makeURLError(const CurlFailure& failure, const NSURL& url);

}  // namespace vorlane

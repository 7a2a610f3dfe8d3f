#pragma once

#include <curl/curl.h>

#include <string>

#include "Platform/NSError.h"
#include "Platform/NSURL.h"

namespace vorlane {

/// The user-info key of the text of the URL that failed.
inline constexpr const char* NSURLErrorFailingURLStringErrorKey = "NSErrorFailingURLStringKey";

/// What libcurl tells about a transfer that failed.
struct CurlFailure {
    CURLcode code = CURLE_OK;
    /// libcurl's own account; may be empty.
    std::string text;
    /// OpenSSL's verdict on the certificate chain (`X509_V_…`); 0 when it found nothing.
    long verification = 0;
    /// The system's error number of a connection that could not be made; 0 when there is none.
    long systemError = 0;
    /// Whether the answer was longer than the session takes.
    bool isTooLong = false;
    /// Whether something came back that does not begin like an HTTP answer.
    bool isGarbage = false;
};

/// An error in `NSURLErrorDomain` with a description and the URL that failed.
NSError makeURLError(NSURLError code, const std::string& description, const NSURL& url);

/// The code in `NSURLErrorDomain` that stands for the failure.
NSURLError urlErrorCode(const CurlFailure& failure);

/// The failure as an error; its description is libcurl's text, or libcurl's name for the code when there is none.
NSError makeURLError(const CurlFailure& failure, const NSURL& url);

}  // namespace vorlane

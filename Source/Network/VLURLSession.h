#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/NSError.h"
#include "Platform/NSURL.h"
#include "Platform/NSURLSession.h"
#include "Public/VLValue.h"

namespace vorlane {

class UIApplication;

/// Sends every request of the library: numbers and logs it, and protects it by a background task of the application. It
/// neither retries nor queues requests. Any thread.
///
/// Each operation returns the started task. The handler may be empty. It runs once, on the platform session's own
/// queue, never inside the call, even if this object has been destroyed. The status code is -1 without an HTTP
/// response. Errors: `NSURLErrorDomain` for no connection, a time-out or a cancelled request; `VLErrorDomainNetwork`
/// code 1 for an answer that is not HTTP; `VLErrorDomainNetwork` with the HTTP status as its code for a status outside
/// 200 to 299, whose body is dropped.
class VLURLSession {
public:
    /// Receives the body as a string, or an error. The string is `nullopt` for a body that is empty or not UTF-8.
    using TextHandler =
        std::function<void(std::optional<std::string> text, std::int64_t statusCode, std::optional<NSError> error)>;
    /// Receives the JSON object of the body, or an error: additionally `VLErrorDomainNetwork` code 0 for a body that is
    /// empty or not UTF-8, and `NSCocoaErrorDomain` code 3840 for one that is not a JSON object.
    using JSONHandler =
        std::function<void(std::optional<Dictionary> answer, std::int64_t statusCode, std::optional<NSError> error)>;
    using DataTask = std::shared_ptr<NSURLSessionDataTask>;

    /// The one time-out of the library: a request fails after this many seconds without progress.
    static constexpr TimeInterval kTimeoutIntervalForRequest = 10.0;

    /// `initWithSession:application:`. Without an application requests have no background task.
    VLURLSession(std::shared_ptr<NSURLSession> session, std::weak_ptr<UIApplication> application);

    /// `GET:completionHandler:`
    DataTask GET(const NSURL& url, TextHandler completionHandler);
    /// `GETJSON:completionHandler:`
    DataTask GETJSON(const NSURL& url, JSONHandler completionHandler);
    /// `DELETE:completionHandler:`
    DataTask DELETE(const NSURL& url, TextHandler completionHandler);

    /// `POST:payload:isFormSubmit:completionHandler:` sends the payload as JSON, in the form field "payload" if
    /// `isFormSubmit` is true. A payload that JSON cannot represent is logged and sent as an empty string.
    DataTask POST(const NSURL& url, Dictionary payload, bool isFormSubmit, TextHandler completionHandler);
    /// `POSTWithJSONResponse:payload:isFormSubmit:completionHandler:`
    DataTask POSTWithJSONResponse(const NSURL& url, Dictionary payload, bool isFormSubmit,
                                  JSONHandler completionHandler);
    /// `PUT:payload:completionHandler:` always sends JSON.
    DataTask PUT(const NSURL& url, Dictionary payload, TextHandler completionHandler);

private:
    DataTask sendWithoutBody(const char* method, const NSURL& url, TextHandler completionHandler);
    DataTask sendPayload(const char* method, const NSURL& url, Dictionary&& payload, bool isFormSubmit,
                         TextHandler completionHandler);
    DataTask startDataTaskWithRequest(NSURLRequest request, std::uint32_t requestId, TextHandler completionHandler);

    // Fixed at construction.
    const std::shared_ptr<NSURLSession> session_;
    const std::weak_ptr<UIApplication> application_;
};

}  // namespace vorlane

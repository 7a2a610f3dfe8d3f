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

/// The one door to the servers: numbers and logs every request, protects it by a background task of the application,
/// and hands back the answer. Nothing is retried or queued. Any thread.
///
/// Each operation returns the started task. Its handler may be empty; it runs exactly once, on the platform session's
/// own queue and never inside the call, also when this object is gone by then. The status code is -1 when no HTTP
/// response came. Errors: those of the platform (no connection, time-out, cancelled); `VLErrorDomainNetwork` with code
/// 1 for an answer that is not HTTP, and with the status as its code for a status outside 200 to 299, whose body is
/// dropped.
class VLURLSession {
public:
    /// The answer's text, which is nothing for an empty body and for one that is not UTF-8; or an error.
    using TextHandler =
        std::function<void(std::optional<std::string> text, std::int64_t statusCode, std::optional<NSError> error)>;
    /// Either the object that the answer holds, or an error: further `VLErrorDomainNetwork` code 0 for an answer
    /// without text, and `NSCocoaErrorDomain` for one that is not a JSON object.
    using JSONHandler =
        std::function<void(std::optional<Dictionary> answer, std::int64_t statusCode, std::optional<NSError> error)>;
    using DataTask = std::shared_ptr<NSURLSessionDataTask>;

    /// `initWithSession:application:`. Without an application requests run unprotected.
    VLURLSession(std::shared_ptr<NSURLSession> session, std::weak_ptr<UIApplication> application);

    /// `GET:completionHandler:`
    DataTask GET(const NSURL& url, TextHandler completionHandler);
    /// `GETJSON:completionHandler:`
    DataTask GETJSON(const NSURL& url, JSONHandler completionHandler);
    /// `DELETE:completionHandler:`
    DataTask DELETE(const NSURL& url, TextHandler completionHandler);

    /// `POST:payload:isFormSubmit:completionHandler:` sends the payload as the form field "payload" that holds its
    /// JSON, or as JSON. A payload that JSON cannot hold is logged and sent as empty text.
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

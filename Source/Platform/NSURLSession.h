#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "Platform/NSError.h"
#include "Platform/NSURL.h"
#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// A request to a server.
struct NSURLRequest {
    NSURL URL;
    std::string HTTPMethod = "GET";
    std::map<std::string, std::string> allHTTPHeaderFields = {};
    std::optional<Data> HTTPBody = std::nullopt;
    /// False: a redirect is delivered as the response.
    bool followsRedirects = true;
};

/// A server's response, over any protocol.
class VORLANE_EXPORT NSURLResponse {
public:
    explicit NSURLResponse(NSURL URL) : URL_(std::move(URL)) {}
    virtual ~NSURLResponse();

    /// The URL of the response, after any redirects.
    const NSURL& URL() const { return URL_; }

private:
    NSURL URL_;
};

/// A response over HTTP.
class VORLANE_EXPORT NSHTTPURLResponse : public NSURLResponse {
public:
    NSHTTPURLResponse(NSURL URL, std::int64_t statusCode) : NSURLResponse(std::move(URL)), statusCode_(statusCode) {}
    ~NSHTTPURLResponse() override;

    std::int64_t statusCode() const { return statusCode_; }

private:
    std::int64_t statusCode_;
};

/// One request, suspended at first. Any thread.
class VORLANE_EXPORT NSURLSessionDataTask {
public:
    virtual ~NSURLSessionDataTask();

    /// Sends the request. A second call has no effect.
    virtual void resume() = 0;

    /// Ends the request: its handler receives `NSURLErrorDomain` code -999, unless it has run already.
    virtual void cancel() = 0;
};

/// The settings of a session.
struct NSURLSessionConfiguration {
    /// A request times out after this many seconds without progress.
    TimeInterval timeoutIntervalForRequest = 60.0;
};

/// Loads URLs. Any thread.
class VORLANE_EXPORT NSURLSession {
public:
    /// Receives an error, or a response and its body (`nullopt` for an empty body).
    using CompletionHandler = std::function<void(
        std::optional<Data> data, std::shared_ptr<const NSURLResponse> response, std::optional<NSError> error)>;

    virtual ~NSURLSession();

    /// `dataTaskWithRequest:completionHandler:` makes a task for the request.
    ///
    /// The handler runs exactly once after `resume()`, on the session's serial queue. A resumed task stays alive until
    /// then. Errors are in `NSURLErrorDomain`.
    virtual std::shared_ptr<NSURLSessionDataTask> dataTaskWithRequest(NSURLRequest request,
                                                                      CompletionHandler completionHandler) = 0;
};

}  // namespace vorlane

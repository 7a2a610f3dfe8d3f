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

/// What to ask of a server.
struct NSURLRequest {
    NSURL URL;
    std::string HTTPMethod = "GET";
    std::map<std::string, std::string> allHTTPHeaderFields = {};
    std::optional<Data> HTTPBody = std::nullopt;
    /// Otherwise the redirect itself is the answer.
    bool followsRedirects = true;
};

/// What a server answered with, over any protocol.
class VORLANE_EXPORT NSURLResponse {
public:
    explicit NSURLResponse(NSURL URL) : URL_(std::move(URL)) {}
    virtual ~NSURLResponse();

    /// The URL that answered, after any redirects.
    const NSURL& URL() const { return URL_; }

private:
    NSURL URL_;
};

/// An answer over HTTP.
class VORLANE_EXPORT NSHTTPURLResponse : public NSURLResponse {
public:
    NSHTTPURLResponse(NSURL URL, std::int64_t statusCode) : NSURLResponse(std::move(URL)), statusCode_(statusCode) {}
    ~NSHTTPURLResponse() override;

    std::int64_t statusCode() const { return statusCode_; }

private:
    std::int64_t statusCode_;
};

/// One request on its way. Made suspended. Any thread.
class VORLANE_EXPORT NSURLSessionDataTask {
public:
    virtual ~NSURLSessionDataTask();

    /// Sends the request. A second call does nothing.
    virtual void resume() = 0;

    /// Ends the request; its completion handler runs with `NSURLErrorDomain` code -999 unless it has run already.
    virtual void cancel() = 0;
};

struct NSURLSessionConfiguration {
    /// Seconds without progress after which a request has timed out.
    TimeInterval timeoutIntervalForRequest = 60.0;
};

/// Loads URLs. Any thread.
class VORLANE_EXPORT NSURLSession {
public:
    /// Either an error, or a response and its body (nothing when there were no bytes).
    using CompletionHandler = std::function<void(
        std::optional<Data> data, std::shared_ptr<const NSURLResponse> response, std::optional<NSError> error)>;

    virtual ~NSURLSession();

    /// `dataTaskWithRequest:completionHandler:` makes a task for the request.
    ///
    /// The handler runs exactly once after `resume()`, on the session's own serial queue, one handler after another. A
    /// task that was resumed lives until then, whether or not the caller keeps it. Errors are in `NSURLErrorDomain`.
    virtual std::shared_ptr<NSURLSessionDataTask> dataTaskWithRequest(NSURLRequest request,
                                                                      CompletionHandler completionHandler) = 0;
};

}  // namespace vorlane

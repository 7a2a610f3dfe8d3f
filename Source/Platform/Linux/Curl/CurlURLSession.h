#pragma once

#include <chrono>
#include <memory>
#include <vector>

#include "Platform/Linux/Curl/CurlCertificates.h"
#include "Platform/Linux/Curl/CurlCompletion.h"
#include "Platform/NSURLSession.h"

namespace vorlane {

class CurlHandlerQueue;
class CurlMultiLoop;

/// A session over libcurl. All requests share one network thread, which starts with the first `resume()`; handlers run
/// one after another on a queue of the session's own.
///
/// Connections are kept and reused, six at most per host; over TLS, HTTP/2 is used where offered. Redirects are
/// followed, twenty at most, among http and https but never from https to http; a POST that is answered with 301, 302
/// or 303 goes on as a GET without body. An answer may have 32 MiB after decompression. A request times out after
/// `timeoutIntervalForRequest` seconds without a byte, counted from `resume()`, also while it waits for a connection.
/// Certificates are always verified.
class CurlURLSession : public NSURLSession {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit CurlURLSession(const NSURLSessionConfiguration& configuration, CurlCertificates certificates = {});
    /// Cancels what is under way and lets the handlers run.
    ~CurlURLSession() override;

    std::shared_ptr<NSURLSessionDataTask> dataTaskWithRequest(NSURLRequest request,
                                                              CompletionHandler completionHandler) override;

    /// Cancels all tasks and ends the network thread, until the deadline. A task that is resumed later ends as
    /// cancelled.
    void cancelAll(TimePoint deadline);

    /// As `cancelAll()`, and lets the handlers run until the deadline. Not to be called from a handler.
    void stop(TimePoint deadline);

    /// Whether no handler is running or waiting.
    bool hasDelivered() const;
    /// Waits until `hasDelivered()` or the deadline; returns whether it holds. Not to be called from a handler.
    bool waitUntilDelivered(TimePoint deadline) const;

    /// After `stop()`: ends the handlers' queue too. No handler runs from now on.
    void close(TimePoint deadline);

private:
    // Fixed at construction.
    const std::shared_ptr<CurlHandlerQueue> handlerQueue_;
    const std::shared_ptr<CurlMultiLoop> loop_;
};

}  // namespace vorlane

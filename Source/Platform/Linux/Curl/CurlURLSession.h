#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Linux/Curl/CurlCertificates.h"
#include "Platform/NSURLSession.h"

namespace vorlane {

class CurlHandlerQueue;
class CurlMultiLoop;

/// A session over libcurl. All requests share one network thread, started by the first `resume()`. Handlers run one
/// after another on the session's own queue.
///
/// Connections are reused, at most six per host. Over TLS, HTTP/2 is used where the server offers it. At most twenty
/// redirects are followed, between http and https but never from https to http; a POST answered with 301, 302 or 303
/// continues as a GET without a body. A response may have 32 MiB after decompression. A request times out after
/// `timeoutIntervalForRequest` seconds without progress, counted from `resume()` and including the wait for a
/// connection. Requests that have not ended may hold 64 MiB in all; a request resumed beyond that fails. Certificates
/// are always verified. Names are looked up by `CurlResolver`.
class CurlURLSession : public NSURLSession {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// `proxy` is a URL, empty for none, or `nullopt` for the proxy that the environment names.
    explicit CurlURLSession(const NSURLSessionConfiguration& configuration, CurlCertificates certificates = {},
                            std::optional<std::string> proxy = std::nullopt);
    /// Cancels all tasks and lets their handlers run.
    ~CurlURLSession() override;

    std::shared_ptr<NSURLSessionDataTask> dataTaskWithRequest(NSURLRequest request,
                                                              CompletionHandler completionHandler) override;

    /// Cancels all tasks and ends the network thread, waiting until the deadline. A task that is resumed later ends as
    /// cancelled.
    void cancelAll(TimePoint deadline);

    /// Like `cancelAll()`, and lets the handlers run until the deadline. Not to be called from a handler.
    void stop(TimePoint deadline);

    /// Whether no handler is running or waiting.
    bool hasDelivered() const;
    /// Waits until `hasDelivered()` or the deadline and returns `hasDelivered()`. Not to be called from a handler.
    bool waitUntilDelivered(TimePoint deadline) const;

    /// Ends the handlers' queue, after `stop()`. No handler runs from then on.
    void close(TimePoint deadline);

private:
    // Fixed at construction.
    const std::shared_ptr<CurlHandlerQueue> handlerQueue_;
    const std::shared_ptr<CurlMultiLoop> loop_;
};

}  // namespace vorlane

#pragma once

#include <functional>
#include <memory>

#include "Platform/NSURLSession.h"
#include "Simulator/Platform/Internal/RequestCount.h"

namespace vorlane {

/// Forwards every request to another session and counts the requests in flight. Any thread.
class CountingURLSession : public NSURLSession {
public:
    /// `completed` runs after each completion handler, on the queue of the other session.
    CountingURLSession(std::shared_ptr<NSURLSession> session, std::shared_ptr<RequestCount> count,
                       std::function<void()> completed);

    std::shared_ptr<NSURLSessionDataTask> dataTaskWithRequest(NSURLRequest request, CompletionHandler handler) override;

private:
    // Fixed at construction.
    const std::shared_ptr<NSURLSession> session_;
    const std::shared_ptr<RequestCount> count_;
    const std::function<void()> completed_;
};

}  // namespace vorlane

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>

#include "Platform/NSURLSession.h"

namespace vorlane {

/// Counts the requests in flight of another session. Any thread.
class RequestCount {
public:
    void begin();
    void end();
    bool isZero() const;

private:
    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::size_t count_ = 0;
};

/// A session that passes everything on to a real one and counts what is under way.
class CountingURLSession : public NSURLSession {
public:
    /// `completed` runs after each handler has, on the session's own queue.
    CountingURLSession(std::shared_ptr<NSURLSession> session, std::shared_ptr<RequestCount> count,
                       std::function<void()> completed);

    std::shared_ptr<NSURLSessionDataTask> dataTaskWithRequest(NSURLRequest request, CompletionHandler handler) override;

private:
    const std::shared_ptr<NSURLSession> session_;
    const std::shared_ptr<RequestCount> count_;
    const std::function<void()> completed_;
};

}  // namespace vorlane

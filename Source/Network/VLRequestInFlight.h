#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Platform/NSError.h"
#include "Platform/NSURL.h"
#include "Platform/NSURLSession.h"
#include "Platform/UIApplication.h"
#include "Public/VLValue.h"

namespace vorlane {

/// One request of `VLURLSession` from its start to its end: its background task, its final log line and its handler.
/// Kept alive by the data task's completion handler and the background task's expiration handler. Any thread.
class VLRequestInFlight : public std::enable_shared_from_this<VLRequestInFlight> {
public:
    using TextHandler =
        std::function<void(std::optional<std::string> text, std::int64_t statusCode, std::optional<NSError> error)>;

    VLRequestInFlight(const NSURLRequest& request, std::uint32_t requestId, std::weak_ptr<UIApplication> application,
                      TextHandler completionHandler);

    /// Begins the background task, then resumes the data task. Called once.
    void start(const std::shared_ptr<NSURLSessionDataTask>& dataTask);

    /// Receives the result of the data task: logs it, calls the handler and ends the background task. Called once,
    /// after `start()`.
    void complete(const std::optional<Data>& data, const NSURLResponse* response, std::optional<NSError> error);

private:
    enum class Phase { Beginning, ExpiredWhileBeginning, Running, Ended };

    void logSuccess(const std::optional<std::string>& text, const NSHTTPURLResponse& response) const;
    void succeed(std::optional<std::string> text, const NSHTTPURLResponse& response);
    void failedWithError(NSError error, std::int64_t statusCode);
    void endBackgroundTask();

    void backgroundTimeExpired();
    void forceStop(UIBackgroundTaskIdentifier backgroundTask);
    std::string backgroundTaskName() const;

    // Fixed at construction.
    const std::string method_;
    const NSURL url_;
    const std::uint32_t requestId_;
    const std::weak_ptr<UIApplication> application_;
    const TextHandler completionHandler_;
    // Set by start() before another thread can read it.
    std::weak_ptr<NSURLSessionDataTask> dataTask_;

    std::mutex mutex_;
    // Guarded by mutex_.
    Phase phase_ = Phase::Beginning;
    UIBackgroundTaskIdentifier backgroundTask_ = UIBackgroundTaskInvalid;
};

}  // namespace vorlane

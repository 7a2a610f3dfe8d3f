#include "Network/VLRequestInFlight.h"

#include <fmt/format.h>

#include <utility>

#include "Categories/NSString+VLUTF8.h"
#include "Core/Base/VLError.h"
#include "Public/VLLog.h"

namespace vorlane {
namespace {

constexpr std::int64_t kNoStatusCode = -1;
constexpr std::int64_t kNoHTTPResponseCode = 1;

std::optional<std::string> textOfBody(const std::optional<Data>& data) {
    if (!data || data->empty()) return std::nullopt;
    return vl_stringWithUTF8Data(*data);
}

}  // namespace

VLRequestInFlight::VLRequestInFlight(const NSURLRequest& request, std::uint32_t requestId,
                                     std::weak_ptr<UIApplication> application, TextHandler completionHandler)
    : method_(request.HTTPMethod),
      url_(request.URL),
      requestId_(requestId),
      application_(std::move(application)),
      completionHandler_(std::move(completionHandler)) {}

void VLRequestInFlight::start(const std::shared_ptr<NSURLSessionDataTask>& dataTask) {
    dataTask_ = dataTask;
    UIBackgroundTaskIdentifier backgroundTask = UIBackgroundTaskInvalid;
    if (const auto application = application_.lock())
        backgroundTask = application->beginBackgroundTaskWithName(
            backgroundTaskName(), [self = shared_from_this()] { self->backgroundTimeExpired(); });

    bool hasExpired = false;
    {
        const std::lock_guard lock(mutex_);
        hasExpired = phase_ == Phase::ExpiredWhileBeginning;
        phase_ = hasExpired ? Phase::Ended : Phase::Running;
        backgroundTask_ = backgroundTask;
    }
    dataTask->resume();
    if (hasExpired) forceStop(backgroundTask);
}

void VLRequestInFlight::complete(const std::optional<Data>& data, const NSURLResponse* response,
                                 std::optional<NSError> error) {
    if (error) return failedWithError(std::move(*error), kNoStatusCode);

    const auto* httpResponse = dynamic_cast<const NSHTTPURLResponse*>(response);
    if (!httpResponse)
        return failedWithError(VLError::errorWithDomain(VLErrorDomainNetwork, kNoHTTPResponseCode,
                                                        "No HTTP status code found: no server response received, or "
                                                        "received a response object of unexpected type."),
                               kNoStatusCode);

    const std::int64_t status = httpResponse->statusCode();
    if (status < 200 || status > 299)
        return failedWithError(
            VLError::errorWithDomain(VLErrorDomainNetwork, status,
                                     fmt::format("Network request error with HTTP status code {}", status)),
            status);

    succeed(textOfBody(data), *httpResponse);
}

void VLRequestInFlight::succeed(std::optional<std::string> text, const NSHTTPURLResponse& response) {
    logSuccess(text, response);
    if (completionHandler_) completionHandler_(std::move(text), response.statusCode(), std::nullopt);
    endBackgroundTask();
}

void VLRequestInFlight::logSuccess(const std::optional<std::string>& text, const NSHTTPURLResponse& response) const {
    // A line that will be dropped is not built: the answer may be large.
    if (!VLLog::sharedInstance().logs(VLLogLevel::Debug)) return;
    logMessage(VLLogLevel::Debug,
               fmt::format("RSPN{:04} {} SUCCESS {} {}", requestId_, method_, response.statusCode(),
                           response.URL().absoluteString()),
               text ? std::optional<Value>(*text) : std::nullopt);
}

void VLRequestInFlight::failedWithError(NSError error, std::int64_t statusCode) {
    logMessage(VLLogLevel::Error, fmt::format("RSPN{:04} {} ERROR {} {}\n{}", requestId_, method_, statusCode,
                                              url_.absoluteString(), error.description()));
    if (completionHandler_) completionHandler_(std::nullopt, statusCode, std::move(error));
    endBackgroundTask();
}

void VLRequestInFlight::endBackgroundTask() {
    UIBackgroundTaskIdentifier backgroundTask = UIBackgroundTaskInvalid;
    {
        const std::lock_guard lock(mutex_);
        // The background time expired first and has ended the task.
        if (std::exchange(phase_, Phase::Ended) == Phase::Ended) return;
        backgroundTask = backgroundTask_;
    }
    if (const auto application = application_.lock()) application->endBackgroundTask(backgroundTask);
}

void VLRequestInFlight::backgroundTimeExpired() {
    UIBackgroundTaskIdentifier backgroundTask = UIBackgroundTaskInvalid;
    {
        const std::lock_guard lock(mutex_);
        if (phase_ == Phase::Beginning) {
            // start() does not know the identifier yet; it stops the request when it does.
            phase_ = Phase::ExpiredWhileBeginning;
            return;
        }
        if (phase_ != Phase::Running) return;
        phase_ = Phase::Ended;
        backgroundTask = backgroundTask_;
    }
    forceStop(backgroundTask);
}

void VLRequestInFlight::forceStop(UIBackgroundTaskIdentifier backgroundTask) {
    logMessage(
        VLLogLevel::Error,
        fmt::format("Network background task with id {} and name {} did not complete - forced to stop by the system",
                    backgroundTask, backgroundTaskName()));
    if (const auto dataTask = dataTask_.lock()) dataTask->cancel();
    if (const auto application = application_.lock()) application->endBackgroundTask(backgroundTask);
}

// Intended: the name is the number followed by the letter "d".
std::string VLRequestInFlight::backgroundTaskName() const { return fmt::format("{}d", requestId_); }

}  // namespace vorlane

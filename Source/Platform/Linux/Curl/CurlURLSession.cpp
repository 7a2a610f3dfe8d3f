#include "Platform/Linux/Curl/CurlURLSession.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "Platform/Linux/Curl/CurlDataTask.h"
#include "Platform/Linux/Curl/CurlHandlerQueue.h"
#include "Platform/Linux/Curl/CurlMultiLoop.h"

namespace vorlane {

namespace {

constexpr std::chrono::seconds kPatience{1};

std::chrono::milliseconds millisecondsOf(TimeInterval seconds) {
    constexpr TimeInterval kUsual = 60;
    constexpr TimeInterval kLongest = 24 * 60 * 60;
    const TimeInterval length = seconds > 0 ? std::min(seconds, kLongest) : kUsual;
    return std::max(std::chrono::milliseconds(static_cast<std::int64_t>(length * 1000)), std::chrono::milliseconds(1));
}

}  // namespace

CurlURLSession::CurlURLSession(const NSURLSessionConfiguration& configuration, CurlCertificates certificates,
                               std::optional<std::string> proxy)
    : handlerQueue_(std::make_shared<CurlHandlerQueue>()),
      loop_(std::make_shared<CurlMultiLoop>(
          CurlSettings{millisecondsOf(configuration.timeoutIntervalForRequest), std::move(certificates),
                       std::move(proxy)},
          [queue = handlerQueue_](auto completions) { queue->deliver(std::move(completions)); })) {}

CurlURLSession::~CurlURLSession() {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    loop_->stop(deadline);
    // A session that is destroyed by a handler must not wait for it. The queue then ends with its last task.
    if (!handlerQueue_->isCurrent()) handlerQueue_->stop(deadline);
}

std::shared_ptr<NSURLSessionDataTask> CurlURLSession::dataTaskWithRequest(NSURLRequest request,
                                                                          CompletionHandler completionHandler) {
    return std::make_shared<CurlDataTask>(loop_, std::move(request), std::move(completionHandler));
}

void CurlURLSession::cancelAll(TimePoint deadline) { loop_->stop(deadline); }

void CurlURLSession::stop(TimePoint deadline) {
    cancelAll(deadline);
    handlerQueue_->waitUntilIdle(deadline);
}

bool CurlURLSession::hasDelivered() const { return handlerQueue_->isIdle(); }

bool CurlURLSession::waitUntilDelivered(TimePoint deadline) const { return handlerQueue_->waitUntilIdle(deadline); }

void CurlURLSession::close(TimePoint deadline) { handlerQueue_->stop(deadline); }

}  // namespace vorlane

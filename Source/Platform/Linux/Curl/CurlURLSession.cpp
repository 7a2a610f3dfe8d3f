#include "Platform/Linux/Curl/CurlURLSession.h"

#include <utility>

#include "Platform/Linux/Curl/CurlDataTask.h"
#include "Platform/Linux/Curl/CurlHandlerQueue.h"
#include "Platform/Linux/Curl/CurlMultiLoop.h"

namespace vorlane {

namespace {

constexpr std::chrono::seconds kPatience{1};

}  // namespace

CurlURLSession::CurlURLSession(const NSURLSessionConfiguration& configuration, CurlCertificates certificates)
    : handlerQueue_(std::make_shared<CurlHandlerQueue>()),
      loop_(std::make_shared<CurlMultiLoop>(
          configuration.timeoutIntervalForRequest, std::move(certificates),
          [queue = handlerQueue_](auto completions) { queue->deliver(std::move(completions)); })) {}

CurlURLSession::~CurlURLSession() {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    loop_->stop(deadline);
    // Let go of inside a handler, the session must not wait for that handler; the queue then ends with its last task.
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

#include "Platform/Linux/CurlURLSession.h"

#include <utility>

#include "Platform/Linux/CurlDataTask.h"
#include "Platform/Linux/CurlMultiLoop.h"
#include "Platform/Linux/LinuxSerialQueue.h"

namespace vorlane {

namespace {

constexpr const char* kQueueLabel = "vorlane.session";
constexpr std::chrono::seconds kPatience{1};

CurlMultiLoop::Delivery deliveryOn(const std::shared_ptr<LinuxSerialQueue>& queue) {
    return [queue](CurlCompletion completion) {
        queue->post([ended = std::make_shared<CurlCompletion>(std::move(completion))] {
            ended->handler(std::move(ended->data), std::move(ended->response), std::move(ended->error));
        });
    };
}

}  // namespace

CurlURLSession::CurlURLSession(const NSURLSessionConfiguration& configuration, CurlCertificates certificates)
    : queue_(std::make_shared<LinuxSerialQueue>(kQueueLabel)),
      loop_(std::make_shared<CurlMultiLoop>(configuration.timeoutIntervalForRequest, std::move(certificates),
                                            deliveryOn(queue_))) {}

CurlURLSession::~CurlURLSession() {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    loop_->stop(deadline);
    // Let go of inside a handler, the session must not wait for that handler; the queue then ends with its last task.
    if (!queue_->isCurrent()) queue_->stop(deadline);
}

std::shared_ptr<NSURLSessionDataTask> CurlURLSession::dataTaskWithRequest(NSURLRequest request,
                                                                          CompletionHandler completionHandler) {
    return std::make_shared<CurlDataTask>(loop_, std::move(request), std::move(completionHandler));
}

void CurlURLSession::cancelAll(TimePoint deadline) { loop_->stop(deadline); }

void CurlURLSession::stop(TimePoint deadline) {
    cancelAll(deadline);
    queue_->waitUntilIdle(deadline);
}

bool CurlURLSession::hasDelivered() const { return queue_->isIdle(); }

bool CurlURLSession::waitUntilDelivered(TimePoint deadline) const { return queue_->waitUntilIdle(deadline); }

void CurlURLSession::close(TimePoint deadline) { queue_->stop(deadline); }

}  // namespace vorlane

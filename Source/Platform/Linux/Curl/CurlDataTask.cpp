#include "Platform/Linux/Curl/CurlDataTask.h"

#include <utility>

#include "Platform/Linux/Curl/CurlError.h"
#include "Platform/Linux/Curl/CurlMultiLoop.h"

namespace vorlane {

namespace {

/// With an allowance for the task itself, its handler, and the containers that hold it.
std::size_t bytesOf(const NSURLRequest& request) {
    constexpr std::size_t kAllowance = 1024;
    std::size_t count = kAllowance + request.URL.absoluteString().size();
    for (const auto& [name, value] : request.allHTTPHeaderFields) count += name.size() + value.size();
    return request.HTTPBody ? count + request.HTTPBody->size() : count;
}

}  // namespace

CurlDataTask::CurlDataTask(std::shared_ptr<CurlMultiLoop> loop, NSURLRequest request,
                           NSURLSession::CompletionHandler handler)
    : loop_(std::move(loop)),
      request_(std::move(request)),
      heldBytes_(bytesOf(request_)),
      handler_(std::move(handler)) {
    loop_->holdBytes(heldBytes_);
}

CurlDataTask::~CurlDataTask() { loop_->releaseBytes(heldBytes_); }

void CurlDataTask::resume() {
    State expected = State::Suspended;
    if (state_.compare_exchange_strong(expected, State::Resumed)) loop_->start(shared_from_this());
}

void CurlDataTask::cancel() {
    switch (state_) {
        case State::Suspended:
            return loop_->deliver(endCancelled());
        case State::Resumed:
            return loop_->cancel(shared_from_this());
        case State::Ended:
            return;
    }
}

std::optional<CurlCompletion> CurlDataTask::end(std::optional<Data> data, std::shared_ptr<const NSURLResponse> response,
                                                std::optional<NSError> error) {
    if (state_.exchange(State::Ended) == State::Ended) return std::nullopt;
    return CurlCompletion{std::move(handler_), std::move(data), std::move(response), std::move(error)};
}

std::optional<CurlCompletion> CurlDataTask::endWithError(NSError error) {
    return end(std::nullopt, nullptr, std::move(error));
}

std::optional<CurlCompletion> CurlDataTask::endCancelled() {
    return endWithError(makeURLError(NSURLError::Cancelled, "The request was cancelled", request_.URL));
}

}  // namespace vorlane

#include "Platform/Linux/Curl/CurlDataTask.h"

#include <utility>

#include "Platform/Linux/Curl/CurlError.h"
#include "Platform/Linux/Curl/CurlMultiLoop.h"

namespace vorlane {

CurlDataTask::CurlDataTask(std::shared_ptr<CurlMultiLoop> loop, NSURLRequest request,
                           NSURLSession::CompletionHandler handler)
    : loop_(std::move(loop)), request_(std::move(request)), handler_(std::move(handler)) {}

void CurlDataTask::resume() {
    State expected = State::suspended;
    if (state_.compare_exchange_strong(expected, State::resumed)) loop_->start(shared_from_this());
}

void CurlDataTask::cancel() {
    switch (state_) {
        case State::suspended:
            return loop_->deliver(endCancelled());
        case State::resumed:
            return loop_->cancel(shared_from_this());
        case State::ended:
            return;
    }
}

std::optional<CurlCompletion> CurlDataTask::end(std::optional<Data> data, std::shared_ptr<const NSURLResponse> response,
                                                std::optional<NSError> error) {
    if (state_.exchange(State::ended) == State::ended) return std::nullopt;
    return CurlCompletion{std::move(handler_), std::move(data), std::move(response), std::move(error)};
}

std::optional<CurlCompletion> CurlDataTask::endWithError(NSError error) {
    return end(std::nullopt, nullptr, std::move(error));
}

std::optional<CurlCompletion> CurlDataTask::endCancelled() {
    return endWithError(makeURLError(NSURLError::cancelled, "The request was cancelled", request_.URL));
}

}  // namespace vorlane

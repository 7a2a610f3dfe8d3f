#include "Platform/Linux/Curl/CurlHandlerQueue.h"

#include <utility>

#include "Platform/Linux/Application/ExitGate.h"

namespace vorlane {

void CurlHandlerQueue::deliver(std::vector<CurlCompletion> completions) {
    if (completions.empty()) return;
    queue_.post(
        [self = weak_from_this(), batch = std::make_shared<std::vector<CurlCompletion>>(std::move(completions))] {
            if (const auto queue = self.lock()) queue->run(batch);
        });
}

void CurlHandlerQueue::stop(TimePoint deadline) {
    queue_.stop(deadline);
    isStopped_ = true;
}

void CurlHandlerQueue::run(const std::shared_ptr<std::vector<CurlCompletion>>& completions) const {
    for (auto& completion : *completions) {
        if (isStopped_) return;
        if (ExitGate::shared().isClosed()) return ExitGate::shared().putAside([completions] {});
        const auto handler = std::exchange(completion.handler, nullptr);
        if (handler) handler(std::move(completion.data), std::move(completion.response), std::move(completion.error));
    }
}

}  // namespace vorlane

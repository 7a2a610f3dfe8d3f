#include "Simulator/Platform/CountingURLSession.h"

#include <atomic>
#include <utility>

namespace vorlane {

namespace {

/// Counts its request from the first resume on.
class CountingTask : public NSURLSessionDataTask {
public:
    CountingTask(std::shared_ptr<NSURLSessionDataTask> task, std::shared_ptr<RequestCount> count)
        : task_(std::move(task)), count_(std::move(count)) {}

    void resume() override {
        if (isResumed_.exchange(true)) return;
        count_->begin();
        task_->resume();
    }
    void cancel() override { task_->cancel(); }

private:
    const std::shared_ptr<NSURLSessionDataTask> task_;
    const std::shared_ptr<RequestCount> count_;
    std::atomic<bool> isResumed_ = false;
};

}  // namespace

void RequestCount::begin() {
    const std::lock_guard lock(mutex_);
    ++count_;
}

void RequestCount::end() {
    const std::lock_guard lock(mutex_);
    if (count_ > 0) --count_;
}

bool RequestCount::isZero() const {
    const std::lock_guard lock(mutex_);
    return count_ == 0;
}

CountingURLSession::CountingURLSession(std::shared_ptr<NSURLSession> session, std::shared_ptr<RequestCount> count,
                                       std::function<void()> completed)
    : session_(std::move(session)), count_(std::move(count)), completed_(std::move(completed)) {}

std::shared_ptr<NSURLSessionDataTask> CountingURLSession::dataTaskWithRequest(NSURLRequest request,
                                                                              CompletionHandler handler) {
    auto task = session_->dataTaskWithRequest(
        std::move(request),
        [handler = std::move(handler), count = count_, completed = completed_](
            std::optional<Data> data, std::shared_ptr<const NSURLResponse> response, std::optional<NSError> error) {
            if (handler) handler(std::move(data), std::move(response), std::move(error));
            count->end();
            completed();
        });
    return std::make_shared<CountingTask>(std::move(task), count_);
}

}  // namespace vorlane

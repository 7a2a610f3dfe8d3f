#include "Simulator/Platform/Internal/CountingURLSession.h"

#include <atomic>
#include <utility>

namespace vorlane {

namespace {

/// Holds a task from its start until its completion handler has run.
using TaskHolder = std::shared_ptr<NSURLSessionDataTask>;

/// Counts its request from its start.
class CountingTask : public NSURLSessionDataTask, public std::enable_shared_from_this<CountingTask> {
public:
    CountingTask(std::shared_ptr<NSURLSessionDataTask> task, std::shared_ptr<RequestCount> count,
                 std::shared_ptr<TaskHolder> holder)
        : task_(std::move(task)), count_(std::move(count)), holder_(std::move(holder)) {}

    void resume() override {
        if (isResumed_.exchange(true)) return;
        count_->begin();
        *holder_ = shared_from_this();
        task_->resume();
    }
    /// A suspended task ends here too: its handler runs, and a later `resume()` has no effect.
    void cancel() override {
        if (!isResumed_.exchange(true)) count_->begin();
        task_->cancel();
    }

private:
    const std::shared_ptr<NSURLSessionDataTask> task_;
    const std::shared_ptr<RequestCount> count_;
    const std::shared_ptr<TaskHolder> holder_;
    std::atomic<bool> isResumed_ = false;
};

}  // namespace

CountingURLSession::CountingURLSession(std::shared_ptr<NSURLSession> session, std::shared_ptr<RequestCount> count,
                                       std::function<void()> completed)
    : session_(std::move(session)), count_(std::move(count)), completed_(std::move(completed)) {}

std::shared_ptr<NSURLSessionDataTask> CountingURLSession::dataTaskWithRequest(NSURLRequest request,
                                                                              CompletionHandler handler) {
    auto holder = std::make_shared<TaskHolder>();
    auto task = session_->dataTaskWithRequest(
        std::move(request),
        [handler = std::move(handler), count = count_, completed = completed_, holder](
            std::optional<Data> data, std::shared_ptr<const NSURLResponse> response, std::optional<NSError> error) {
            const auto taskUntilReturn = std::exchange(*holder, nullptr);
            if (handler) handler(std::move(data), std::move(response), std::move(error));
            count->end();
            completed();
        });
    return std::make_shared<CountingTask>(std::move(task), count_, std::move(holder));
}

}  // namespace vorlane

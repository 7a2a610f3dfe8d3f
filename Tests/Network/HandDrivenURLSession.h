#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/NSURLSession.h"

namespace vorlane {

/// A network of one request, completed by the test itself on the test's thread. It writes down what is done to a task,
/// and keeps none alive unless it is told to.
class HandDrivenURLSession : public NSURLSession {
public:
    explicit HandDrivenURLSession(std::vector<std::string>& events) : events_(events) {}

    std::shared_ptr<NSURLSessionDataTask> dataTaskWithRequest(NSURLRequest request,
                                                              CompletionHandler handler) override {
        request_ = std::move(request);
        *handler_ = std::move(handler);
        auto task = std::make_shared<Task>(events_, handler_);
        if (keepsTasks_) tasks_.push_back(task);
        return task;
    }

    /// From now on keeps every task alive, as a real network does while one is on its way.
    void keepTasks() { keepsTasks_ = true; }

    const NSURLRequest& request() const { return *request_; }

    /// Completes the request, which then is forgotten.
    void complete(std::optional<Data> data, std::shared_ptr<const NSURLResponse> response,
                  std::optional<NSError> error) {
        std::exchange(*handler_, nullptr)(std::move(data), std::move(response), std::move(error));
    }

private:
    struct Task : NSURLSessionDataTask {
        Task(std::vector<std::string>& taskEvents, std::shared_ptr<CompletionHandler> taskHandler)
            : events(taskEvents), handler(std::move(taskHandler)) {}

        void resume() override { events.push_back("resume"); }
        void cancel() override {
            events.push_back("cancel");
            const auto complete = std::exchange(*handler, nullptr);
            if (complete)
                complete(std::nullopt, nullptr,
                         NSError(NSURLErrorDomain, static_cast<std::int64_t>(NSURLError::cancelled)));
        }

        std::vector<std::string>& events;
        const std::shared_ptr<CompletionHandler> handler;
    };

    std::vector<std::string>& events_;
    std::optional<NSURLRequest> request_;
    bool keepsTasks_ = false;
    std::vector<std::shared_ptr<NSURLSessionDataTask>> tasks_;
    const std::shared_ptr<CompletionHandler> handler_ = std::make_shared<CompletionHandler>();
};

}  // namespace vorlane

#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/NSURLSession.h"

namespace vorlane {

/// A network with one request, which the test completes on its own thread. It records the calls of its tasks, and keeps
/// no task alive before `keepTasks()`.
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

    /// Keeps every task alive from now on, as a real network keeps a running task.
    void keepTasks() { keepsTasks_ = true; }

    const NSURLRequest& request() const { return *request_; }

    /// Completes the request. Once.
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
                         NSError(NSURLErrorDomain, static_cast<std::int64_t>(NSURLError::Cancelled)));
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

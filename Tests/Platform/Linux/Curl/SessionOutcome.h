#pragma once

#include <chrono>
#include <cstdint>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/NSURLSession.h"

namespace vorlane {

/// How a request ended.
struct SessionOutcome {
    std::optional<Data> data;
    std::shared_ptr<const NSURLResponse> response;
    std::optional<NSError> error;
    std::thread::id thread;

    /// The body as a string; empty if there was none.
    std::string text() const { return data ? std::string(data->begin(), data->end()) : std::string(); }
    /// -1 if there was no HTTP response.
    std::int64_t status() const {
        const auto* const http = dynamic_cast<const NSHTTPURLResponse*>(response.get());
        return http == nullptr ? -1 : http->statusCode();
    }
    /// The code of the transport error; 0 if there was none.
    std::int64_t errorCode() const { return error && error->domain() == NSURLErrorDomain ? error->code() : 0; }
};

/// A request in a session.
class PendingRequest {
public:
    PendingRequest(NSURLSession& session, NSURLRequest request) {
        auto promise = std::make_shared<std::promise<SessionOutcome>>();
        outcome_ = promise->get_future();
        task_ = session.dataTaskWithRequest(std::move(request), [promise](auto data, auto response, auto error) {
            promise->set_value({std::move(data), std::move(response), std::move(error), std::this_thread::get_id()});
        });
    }

    NSURLSessionDataTask& task() { return *task_; }
    void resume() { task_->resume(); }
    void cancel() { task_->cancel(); }
    /// Waits for the handler, which throws if it runs twice.
    SessionOutcome outcome() { return outcome_.get(); }
    bool endsWithin(std::chrono::seconds time) const { return outcome_.wait_for(time) == std::future_status::ready; }
    bool hasEnded() const { return outcome_.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }

private:
    std::future<SessionOutcome> outcome_;
    std::shared_ptr<NSURLSessionDataTask> task_;
};

inline NSURLRequest requestOf(const std::string& url, const std::string& method = "GET") {
    return {*NSURL::URLWithString(url), method};
}

inline NSURLRequest requestOf(const std::string& url, const std::string& method, const std::string& body) {
    return {*NSURL::URLWithString(url), method, {}, Data(body.begin(), body.end())};
}

inline SessionOutcome fetch(NSURLSession& session, NSURLRequest request) {
    PendingRequest pending(session, std::move(request));
    pending.resume();
    return pending.outcome();
}

}  // namespace vorlane

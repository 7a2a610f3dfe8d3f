#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "Platform/Linux/Curl/CurlCompletion.h"
#include "Platform/NSURLSession.h"

namespace vorlane {

class CurlMultiLoop;
class CurlTransfer;

/// One request and its handler. Any thread, except where an operation says otherwise.
class CurlDataTask : public NSURLSessionDataTask, public std::enable_shared_from_this<CurlDataTask> {
public:
    CurlDataTask(std::shared_ptr<CurlMultiLoop> loop, NSURLRequest request, NSURLSession::CompletionHandler handler);

    ~CurlDataTask() override;

    CurlDataTask(const CurlDataTask&) = delete;
    CurlDataTask& operator=(const CurlDataTask&) = delete;

    void resume() override;
    /// A task that was never resumed ends too, and its handler runs.
    void cancel() override;

    const NSURLRequest& request() const { return request_; }
    /// About how much memory the task takes, in bytes.
    std::size_t heldBytes() const { return heldBytes_; }

    /// Ends the task. Returns its handler and the outcome the first time, `nullopt` afterwards.
    std::optional<CurlCompletion> end(std::optional<Data> data, std::shared_ptr<const NSURLResponse> response,
                                      std::optional<NSError> error);
    std::optional<CurlCompletion> endWithError(NSError error);
    /// Ends the task with code -999.
    std::optional<CurlCompletion> endCancelled();
    bool hasEnded() const { return state_ == State::Ended; }

    /// The transfer that performs the task, or null. Network thread only.
    CurlTransfer* transfer() const { return transfer_; }
    void setTransfer(CurlTransfer* transfer) { transfer_ = transfer; }

private:
    enum class State : std::uint8_t { Suspended, Resumed, Ended };

    // Fixed at construction.
    const std::shared_ptr<CurlMultiLoop> loop_;
    const NSURLRequest request_;
    const std::size_t heldBytes_;
    // Only for the caller that changes the state to ended.
    NSURLSession::CompletionHandler handler_;
    std::atomic<State> state_ = State::Suspended;
    CurlTransfer* transfer_ = nullptr;
};

}  // namespace vorlane

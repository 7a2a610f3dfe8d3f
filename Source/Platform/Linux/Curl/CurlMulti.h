#pragma once

#include <curl/curl.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Platform/Linux/Curl/CurlCertificates.h"
#include "Platform/Linux/Curl/CurlCompletion.h"
#include "Platform/Linux/Curl/CurlTransfer.h"

namespace vorlane {

class CurlDataTask;

/// A multi handle with a queue before it: hands libcurl no more transfers per host than its connections carry, watches
/// over their progress and collects what has ended. Network thread only, except `wake()`.
///
/// A transfer that libcurl holds back itself, for want of a connection, may miss its turn when one gets free, and its
/// lists are walked with every step.
class CurlMulti {
public:
    using TimePoint = CurlTransfer::TimePoint;

    CurlMulti(std::chrono::milliseconds timeout, CurlCertificates certificates);
    ~CurlMulti();

    CurlMulti(const CurlMulti&) = delete;
    CurlMulti& operator=(const CurlMulti&) = delete;

    void add(std::shared_ptr<CurlDataTask> task);
    /// Ends the task as cancelled, unless it has ended.
    void cancel(CurlDataTask& task);
    void cancelAll();

    /// Moves every transfer as far as it goes without waiting, and ends those that have timed out.
    void step();
    /// Whether another step has something to do at once.
    bool isBusy() const { return isBusy_; }
    /// Waits until there is something to do, or for `wake()`.
    void wait();
    /// Ends the `wait()` under way or the next one. Any thread.
    void wake();

    /// What has ended since the last call, in order.
    std::vector<CurlCompletion> takeCompletions();
    /// How many it would give.
    std::size_t completionCount() const { return completions_.size(); }

private:
    struct Waiting {
        std::shared_ptr<CurlDataTask> task;
        TimePoint since;
    };
    struct Host {
        bool isSecure = false;
        CurlLine line;
        std::size_t active = 0;
        // Oldest first; a task that has ended meanwhile stays until its turn.
        std::deque<Waiting> waiting;
    };
    struct MultiCleanup {
        void operator()(CURLM* handle) const { curl_multi_cleanup(handle); }
    };

    void begin(const std::string& origin, Host& host, Waiting waiting);
    void beginWaiting();
    void beginWaiting(const std::string& origin);
    static std::size_t mostTransfersOf(const Host& host);
    void collectFinished();
    void finished(CurlTransfer& transfer, CURLcode code);
    void hand(CurlTransfer& transfer);
    void release(CurlTransfer& transfer);
    void end(std::optional<CurlCompletion> completion);
    void returnMemory();
    void endOverdue();
    void endOverdueWaiting(Host& host);
    void endTimedOut(CurlDataTask& task, const NSURL& url);
    bool isOverdue(TimePoint since) const { return now_ - since >= timeout_; }
    void expectProgress(TimePoint since);
    std::unique_ptr<CurlTransfer> takeTransfer();

    // Fixed at construction.
    const std::chrono::milliseconds timeout_;
    const CurlCertificates certificates_;
    const std::unique_ptr<CURLM, MultiCleanup> handle_;

    TimePoint now_ = std::chrono::steady_clock::now();
    // No later than the first transfer or waiting task is overdue.
    TimePoint nextCheck_ = TimePoint::max();
    bool isBusy_ = false;
    // How many tasks were added since memory was last returned.
    std::size_t rush_ = 0;
    std::unordered_map<std::string, Host> hosts_;
    std::vector<std::unique_ptr<CurlTransfer>> active_;
    std::vector<std::unique_ptr<CurlTransfer>> idle_;
    std::vector<CurlCompletion> completions_;
};

}  // namespace vorlane

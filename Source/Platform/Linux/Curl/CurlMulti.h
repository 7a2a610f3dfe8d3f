#pragma once

#include <curl/curl.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Platform/Linux/Curl/CurlCompletion.h"
#include "Platform/Linux/Curl/CurlResolver.h"
#include "Platform/Linux/Curl/CurlSettings.h"
#include "Platform/Linux/Curl/CurlTransfer.h"
#include "Platform/Linux/Curl/EventDescriptor.h"

namespace vorlane {

class CurlDataTask;

/// A multi handle behind a queue: adds no more transfers per host than the host's connections carry, observes their
/// progress, and collects completions. Network thread only.
///
/// The queue exists because libcurl walks its list of waiting transfers with every step, and may leave a transfer
/// waiting although a connection has become free.
class CurlMulti {
public:
    using TimePoint = CurlTransfer::TimePoint;

    /// Asks for the addresses of a name, which `useAddresses()` reports later.
    using LookUp = std::function<void(const std::string& name)>;

    /// `event`, which must outlive the multi handle, ends a `wait()` when it is signalled.
    CurlMulti(CurlSettings settings, const EventDescriptor& event, LookUp lookUp);
    ~CurlMulti();

    CurlMulti(const CurlMulti&) = delete;
    CurlMulti& operator=(const CurlMulti&) = delete;

    /// Whether the system had the memory for a multi handle. If not, only destruction is allowed.
    bool isUsable() const { return handle_ != nullptr; }

    void add(std::shared_ptr<CurlDataTask> task);
    /// Ends the task as cancelled, unless it has ended.
    void cancel(CurlDataTask& task);
    void cancelAll();
    /// Continues the transfers that wait for the name.
    void useAddresses(const CurlResolver::Answer& answer);

    /// Advances every transfer as far as possible without waiting, and ends those that have timed out.
    void step();
    /// Whether another step is due at once.
    bool isBusy() const { return isBusy_; }
    /// Waits until a step is due or the event is signalled.
    void wait();

    /// Removes and returns the completions, in order.
    std::vector<CurlCompletion> takeCompletions();
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
        // Oldest first. A task that ends early stays until its turn.
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
    bool isOverdue(TimePoint since) const { return now_ - since >= settings_.timeout; }
    void expectProgress(TimePoint since);
    std::unique_ptr<CurlTransfer> takeTransfer();

    // Fixed at construction.
    const CurlSettings settings_;
    const LookUp lookUp_;
    const EventDescriptor& event_;
    const std::unique_ptr<CURLM, MultiCleanup> handle_;

    TimePoint now_ = std::chrono::steady_clock::now();
    // Not later than the earliest time-out of a transfer or waiting task.
    TimePoint nextCheck_ = TimePoint::max();
    bool isBusy_ = false;
    // How many tasks were added since memory was last returned to the system.
    std::size_t rush_ = 0;
    std::unordered_map<std::string, Host> hosts_;
    std::vector<std::unique_ptr<CurlTransfer>> active_;
    std::vector<std::unique_ptr<CurlTransfer>> idle_;
    std::vector<CurlCompletion> completions_;
};

}  // namespace vorlane

#include "Platform/Linux/Curl/CurlMulti.h"

#include <malloc.h>

#include <algorithm>
#include <utility>

#include "Platform/Linux/Curl/CurlDataTask.h"
#include "Platform/Linux/Curl/CurlError.h"
#include "Platform/Linux/Curl/CurlOrigin.h"

namespace vorlane {

namespace {

constexpr long kMostConnectionsOfHost = 6;
constexpr long kMostConnectionsKept = 24;
constexpr std::size_t kMostTransfersOfHost = kMostConnectionsOfHost;
// Few enough for the connections of one host when the server limits the requests on each.
constexpr std::size_t kMostTransfersOfMultiplexedHost = 36;
constexpr std::size_t kMostTransfersKept = 8;
constexpr std::chrono::milliseconds kLongestWait = std::chrono::minutes(10);
// After this many requests, memory is returned to the system at the first rest of this length.
constexpr std::size_t kRush = 500;
constexpr std::chrono::milliseconds kRest{200};

}  // namespace

CurlMulti::CurlMulti(CurlSettings settings, const EventDescriptor& event, LookUp lookUp)
    : settings_(std::move(settings)), lookUp_(std::move(lookUp)), event_(event), handle_(curl_multi_init()) {
    curl_multi_setopt(handle_.get(), CURLMOPT_MAX_HOST_CONNECTIONS, kMostConnectionsOfHost);
    curl_multi_setopt(handle_.get(), CURLMOPT_MAXCONNECTS, kMostConnectionsKept);
    curl_multi_setopt(handle_.get(), CURLMOPT_PIPELINING, CURLPIPE_MULTIPLEX);
}

CurlMulti::~CurlMulti() {
    for (const auto& transfer : active_) curl_multi_remove_handle(handle_.get(), transfer->handle());
}

void CurlMulti::add(std::shared_ptr<CurlDataTask> task) {
    ++rush_;
    const std::string origin = originOfURL(task->request().URL.absoluteString());
    Host& host = hosts_[origin];
    host.isSecure = isSecureURL(origin);
    Waiting waiting{std::move(task), now_};
    if (host.active < mostTransfersOf(host)) return begin(origin, host, std::move(waiting));
    expectProgress(now_);
    host.waiting.push_back(std::move(waiting));
}

void CurlMulti::begin(const std::string& origin, Host& host, Waiting waiting) {
    ++host.active;
    active_.push_back(takeTransfer());
    CurlTransfer& transfer = *active_.back();
    transfer.begin(std::move(waiting.task), origin, waiting.since, host.line);
    expectProgress(waiting.since);
    hand(transfer);
}

void CurlMulti::hand(CurlTransfer& transfer) {
    curl_multi_add_handle(handle_.get(), transfer.handle());
    isBusy_ = true;
}

void CurlMulti::cancel(CurlDataTask& task) {
    end(task.endCancelled());
    if (task.transfer() != nullptr) release(*task.transfer());
}

void CurlMulti::cancelAll() {
    for (auto& [origin, host] : hosts_) {
        for (auto& waiting : std::exchange(host.waiting, {})) end(waiting.task->endCancelled());
    }
    while (!active_.empty()) cancel(*active_.back()->task());
}

void CurlMulti::step() {
    isBusy_ = false;
    now_ = std::chrono::steady_clock::now();
    int running = 0;
    curl_multi_perform(handle_.get(), &running);
    collectFinished();
    beginWaiting();
    if (now_ >= nextCheck_) endOverdue();
}

void CurlMulti::wait() {
    // Rounded up: rounded down, the last millisecond would be a busy loop.
    const auto left = nextCheck_ == TimePoint::max()
                          ? kLongestWait
                          : std::chrono::ceil<std::chrono::milliseconds>(nextCheck_ - std::chrono::steady_clock::now());
    const bool mayRest = rush_ >= kRush && hosts_.empty();
    const auto timeout = std::clamp(left, std::chrono::milliseconds(0), mayRest ? kRest : kLongestWait);
    curl_waitfd wakeUp{event_.descriptor(), CURL_WAIT_POLLIN, 0};
    curl_multi_poll(handle_.get(), &wakeUp, 1, static_cast<int>(timeout.count()), nullptr);
    if (wakeUp.revents != 0) event_.drain();
    const auto before = std::exchange(now_, std::chrono::steady_clock::now());
    if (mayRest && now_ - before >= kRest) returnMemory();
}

void CurlMulti::returnMemory() {
    // Otherwise the process keeps the memory of thousands of waiting requests.
    malloc_trim(0);
    rush_ = 0;
}

std::vector<CurlCompletion> CurlMulti::takeCompletions() { return std::exchange(completions_, {}); }

void CurlMulti::collectFinished() {
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(handle_.get(), &left)) {
        if (message->msg != CURLMSG_DONE) continue;
        CurlTransfer* transfer = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
        finished(*transfer, message->data.result);
    }
}

void CurlMulti::finished(CurlTransfer& transfer, CURLcode code) {
    // Removed first: a redirect changes the handle's options.
    curl_multi_remove_handle(handle_.get(), transfer.handle());
    end(transfer.finish(code));
    if (transfer.goesOn()) return hand(transfer);
    if (transfer.wantedHost()) return lookUp_(transfer.wantedHost()->name);
    release(transfer);
}

void CurlMulti::useAddresses(const CurlResolver::Answer& answer) {
    std::vector<CurlTransfer*> waiting;
    for (const auto& transfer : active_) {
        const auto& host = transfer->wantedHost();
        if (host && host->name == answer.name) waiting.push_back(transfer.get());
    }
    for (CurlTransfer* const transfer : waiting) {
        if (answer.addresses.empty()) {
            end(transfer->failWithUnknownName());
            release(*transfer);
        } else {
            transfer->useAddresses(answer.addresses);
            hand(*transfer);
        }
    }
}

void CurlMulti::release(CurlTransfer& transfer) {
    curl_multi_remove_handle(handle_.get(), transfer.handle());
    const std::string origin = transfer.origin();
    transfer.clear();
    const auto place = std::ranges::find(active_, &transfer, &std::unique_ptr<CurlTransfer>::get);
    std::swap(*place, active_.back());
    if (idle_.size() < kMostTransfersKept) idle_.push_back(std::move(active_.back()));
    active_.pop_back();

    --hosts_[origin].active;
    beginWaiting(origin);
}

std::size_t CurlMulti::mostTransfersOf(const Host& host) {
    if (host.line.isMultiplexed) return kMostTransfersOfMultiplexedHost;
    // Over TLS the first request finds out whether the connection is multiplexed.
    return host.line.isOpen || !host.isSecure ? kMostTransfersOfHost : 1;
}

/// Begins waiting tasks of the hosts that have room.
void CurlMulti::beginWaiting() {
    std::vector<std::string> roomy;
    for (const auto& [origin, host] : hosts_) {
        if (!host.waiting.empty() && host.active < mostTransfersOf(host)) roomy.push_back(origin);
    }
    for (const auto& origin : roomy) beginWaiting(origin);
}

void CurlMulti::beginWaiting(const std::string& origin) {
    const auto found = hosts_.find(origin);
    Host& host = found->second;
    while (!host.waiting.empty() && host.active < mostTransfersOf(host)) {
        Waiting next = std::move(host.waiting.front());
        host.waiting.pop_front();
        if (!next.task->hasEnded()) begin(origin, host, std::move(next));
    }
    if (host.active == 0) hosts_.erase(found);
}

void CurlMulti::end(std::optional<CurlCompletion> completion) {
    if (completion) completions_.push_back(std::move(*completion));
}

void CurlMulti::endOverdue() {
    nextCheck_ = TimePoint::max();
    for (auto& [origin, host] : hosts_) endOverdueWaiting(host);

    std::vector<CurlTransfer*> overdue;
    for (const auto& transfer : active_) {
        if (isOverdue(transfer->lastProgress())) {
            overdue.push_back(transfer.get());
        } else {
            expectProgress(transfer->lastProgress());
        }
    }
    for (CurlTransfer* const transfer : overdue) {
        endTimedOut(*transfer->task(), transfer->url());
        release(*transfer);
    }
}

void CurlMulti::endOverdueWaiting(Host& host) {
    while (!host.waiting.empty()) {
        const Waiting& next = host.waiting.front();
        if (!next.task->hasEnded() && !isOverdue(next.since)) return expectProgress(next.since);
        endTimedOut(*next.task, next.task->request().URL);
        host.waiting.pop_front();
    }
}

void CurlMulti::endTimedOut(CurlDataTask& task, const NSURL& url) {
    end(task.endWithError(makeURLError(NSURLError::TimedOut, "The request timed out", url)));
}

void CurlMulti::expectProgress(TimePoint since) { nextCheck_ = std::min(nextCheck_, since + settings_.timeout); }

std::unique_ptr<CurlTransfer> CurlMulti::takeTransfer() {
    if (idle_.empty()) return std::make_unique<CurlTransfer>(now_, settings_);
    auto transfer = std::move(idle_.back());
    idle_.pop_back();
    return transfer;
}

}  // namespace vorlane

#include "Simulator/Service/Http/RequestLog.h"

#include <chrono>
#include <utility>

#include "Simulator/Service/Http/RequestFilter.h"

namespace vorlane::service {
namespace {

constexpr std::size_t kMostRequests = 10'000;
constexpr std::size_t kMostBytes = 256UL << 20U;

/// The length of the parts of a request whose length the client chooses.
std::size_t bytesOf(const ServiceRequest& request) {
    auto bytes = request.path.size() + request.body.size();
    for (const auto& [name, value] : request.query) bytes += name.size() + value.size();
    for (const auto& [name, value] : request.headers) bytes += name.size() + value.size();
    return bytes;
}

}  // namespace

RequestLog::RequestLog(Listener listener) : listener_(std::move(listener)) {}

void RequestLog::add(RecordedRequest request) {
    Record record;
    {
        const std::lock_guard lock(mutex_);
        request.number = ++lastNumber_;
        record = std::make_shared<const RecordedRequest>(std::move(request));
        records_.push_back(record);
        rememberedBytes_ += bytesOf(record->request);
        forgetTooMuch();
    }
    changed_.notify_all();
    if (listener_) listener_(*record);
}

std::vector<RequestLog::Record> RequestLog::requests(const RequestFilter& filter) const {
    const std::lock_guard lock(mutex_);
    return admitted(filter);
}

std::vector<RequestLog::Record> RequestLog::waitFor(std::size_t count, const RequestFilter& filter,
                                                    double seconds) const {
    const auto deadline = std::chrono::steady_clock::now() +
                          std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds));
    std::unique_lock lock(mutex_);
    auto found = admitted(filter);
    while (found.size() < count && !isClosed_) {
        if (changed_.wait_until(lock, deadline) == std::cv_status::timeout) return admitted(filter);
        found = admitted(filter);
    }
    return found;
}

void RequestLog::clear() {
    const std::lock_guard lock(mutex_);
    records_.clear();
    rememberedBytes_ = 0;
}

void RequestLog::close() {
    {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
    }
    changed_.notify_all();
}

std::vector<RequestLog::Record> RequestLog::admitted(const RequestFilter& filter) const {
    std::vector<Record> found;
    for (const auto& record : records_)
        if (filter.admits(*record)) found.push_back(record);
    return found;
}

void RequestLog::forgetTooMuch() {
    while (records_.size() > kMostRequests || (rememberedBytes_ > kMostBytes && records_.size() > 1)) {
        rememberedBytes_ -= bytesOf(records_.front()->request);
        records_.pop_front();
    }
}

}  // namespace vorlane::service

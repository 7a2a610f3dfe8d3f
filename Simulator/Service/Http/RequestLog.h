#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "Simulator/Service/Http/RecordedRequest.h"

namespace vorlane::service {

struct RequestFilter;

/// The requests of apps, oldest first. Beyond 10,000 requests or 256 MiB the oldest are dropped. Any thread.
class RequestLog {
public:
    using Record = std::shared_ptr<const RecordedRequest>;
    /// Called with every recorded request, on the thread that records it; may run on several threads at once.
    using Listener = std::function<void(const RecordedRequest&)>;

    explicit RequestLog(Listener listener = nullptr);

    /// Records the request and assigns its number.
    void add(RecordedRequest request);
    std::vector<Record> requests(const RequestFilter& filter) const;
    /// Returns the matching requests once there are `count` of them, `seconds` have passed, or the log is closed.
    std::vector<Record> waitFor(std::size_t count, const RequestFilter& filter, double seconds) const;

    /// Removes all requests; the numbers continue.
    void clear();
    /// Ends every `waitFor()`, current and later.
    void close();

private:
    std::vector<Record> admitted(const RequestFilter& filter) const;
    void forgetTooMuch();

    // Fixed at construction.
    const Listener listener_;

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    // Guarded by mutex_.
    std::deque<Record> records_;
    std::size_t rememberedBytes_ = 0;
    std::int64_t lastNumber_ = 0;
    bool isClosed_ = false;
};

}  // namespace vorlane::service

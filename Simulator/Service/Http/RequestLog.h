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

/// The requests that apps have made, newest last; any thread may wait for more to come. What is too much to remember
/// (10,000 requests, or 256 MiB) makes the oldest be forgotten.
class RequestLog {
public:
    using Record = std::shared_ptr<const RecordedRequest>;
    /// Is told of every request as it is recorded, on the thread that records it, several at once.
    using Listener = std::function<void(const RecordedRequest&)>;

    explicit RequestLog(Listener listener = nullptr);

    /// Gives the request its number and remembers it.
    void add(RecordedRequest request);
    std::vector<Record> requests(const RequestFilter& filter) const;
    /// The same, once there are `count` of them, or after so many seconds, or when the log is closed.
    std::vector<Record> waitFor(std::size_t count, const RequestFilter& filter, double seconds) const;

    /// Forgets all; the numbers go on.
    void clear();
    /// Ends all waiting, now and from now on.
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

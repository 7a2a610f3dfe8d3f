#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>

#include "Public/VLValue.h"

namespace vorlane {

class DispatchGroup;
class DispatchQueue;

/// Runs one list request at a time: the next starts when the group of the one before is empty, or after 300 seconds. No
/// thread is blocked meanwhile, so a pending request cannot delay a shutdown. Any thread may post.
class VLInboxSyncQueue : public std::enable_shared_from_this<VLInboxSyncQueue> {
public:
    /// Starts a request and returns the group to wait for; null if there is no need to wait.
    using Request = std::function<std::shared_ptr<DispatchGroup>()>;

    static constexpr TimeInterval kLongestWait = 300;

    /// Requests start on `queue`, which must be serial.
    explicit VLInboxSyncQueue(std::shared_ptr<DispatchQueue> queue);
    ~VLInboxSyncQueue();

    /// Requests start in the order of posting.
    void post(Request request);

private:
    void startNext();
    void wait(DispatchGroup& group);
    void endTurn(std::uint64_t turn);

    // Fixed at construction.
    const std::shared_ptr<DispatchQueue> queue_;
    // The queue only.
    std::deque<Request> requests_;
    bool isWaiting_ = false;
    /// Numbers the requests that were waited for, so that a late end of one does not end the next.
    std::uint64_t turn_ = 0;
};

}  // namespace vorlane

#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>

#include "Public/VLValue.h"

namespace vorlane {

class DispatchGroup;
class DispatchQueue;

/// Admits one list request at a time: the next starts when the group of the one before has emptied, or after 300
/// seconds. No thread is held up meanwhile, so nothing that is still awaited can delay a shutdown. Any thread may post.
class VLInboxSyncQueue : public std::enable_shared_from_this<VLInboxSyncQueue> {
public:
    /// Starts a request and gives the group to wait for; null when there is nothing to wait for.
    using Request = std::function<std::shared_ptr<DispatchGroup>()>;

    static constexpr TimeInterval kLongestWait = 300;

    /// Requests start on `queue`, a serial one.
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
    /// Counts the requests that were waited for, so that what comes late for one does not end the next.
    std::uint64_t turn_ = 0;
};

}  // namespace vorlane

#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "Public/VLExport.h"

namespace vorlane {

class DispatchQueue;

/// Runs operations one after another, in the order of adding, and can be suspended. Any thread.
class VORLANE_EXPORT NSOperationQueue {
public:
    /// A queue of at most one concurrent operation, not suspended, whose operations run on `underlyingQueue`.
    explicit NSOperationQueue(std::shared_ptr<DispatchQueue> underlyingQueue);
    ~NSOperationQueue();
    NSOperationQueue(const NSOperationQueue&) = delete;
    NSOperationQueue& operator=(const NSOperationQueue&) = delete;

    /// `addOperationWithBlock:` runs `block` later, never inside this call, and not while the queue is suspended. What
    /// still waits when the queue goes away is dropped.
    void addOperationWithBlock(std::function<void()> block);

    /// `setSuspended:` keeps operations from starting; one that runs already goes on.
    void setSuspended(bool isSuspended);
    bool isSuspended() const;

    /// How many operations have not started yet.
    std::size_t operationCount() const;

private:
    struct State;

    const std::shared_ptr<State> state_;
};

}  // namespace vorlane

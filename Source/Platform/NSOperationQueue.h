#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "Public/VLExport.h"

namespace vorlane {

class DispatchQueue;

/// Runs operations one after another, in the order in which they were added, and can be suspended. Any thread.
class VORLANE_EXPORT NSOperationQueue {
public:
    /// Makes a queue that is not suspended and runs one operation at a time on `underlyingQueue`.
    explicit NSOperationQueue(std::shared_ptr<DispatchQueue> underlyingQueue);
    ~NSOperationQueue();
    NSOperationQueue(const NSOperationQueue&) = delete;
    NSOperationQueue& operator=(const NSOperationQueue&) = delete;

    /// `addOperationWithBlock:` runs `block` after this call has returned and while the queue is not suspended.
    /// Destroying the queue drops the operations that have not started.
    void addOperationWithBlock(std::function<void()> block);

    /// `setSuspended:` keeps further operations from starting. A running operation continues.
    void setSuspended(bool isSuspended);
    bool isSuspended() const;

    /// The number of operations that have not started.
    std::size_t operationCount() const;

private:
    struct State;

    const std::shared_ptr<State> state_;
};

}  // namespace vorlane

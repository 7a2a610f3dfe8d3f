#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace vorlane {

/// Closes when the process exits, so that a host may leave `main()` or call `exit()` at any time without a shutdown:
/// the network threads end before OpenSSL cleans up, and no callback of the host runs while its statics are destroyed.
/// There is one gate in the process; it is never destroyed. Any thread.
class ExitGate {
public:
    /// A thread that must end before the process exits.
    class Worker {
    public:
        virtual ~Worker();
        /// Ends the thread soon, without calling any handler or releasing any object.
        virtual void haltForExit() = 0;
    };

    static ExitGate& shared();

    /// Makes the gate close when the process exits. Must be called before the first thread starts, and on the thread
    /// that runs the main queue. Repeated calls are cheap.
    void arm();

    /// Halts `worker` when the gate closes. Returns false without effect if the gate is closed.
    bool watch(const std::shared_ptr<Worker>& worker);

    /// Runs `task`, which may be empty, and returns true. If the gate is closed, neither runs nor destroys it and
    /// returns false.
    bool run(std::function<void()> task);

    bool isClosed() const { return isClosed_; }

    /// Keeps `task` and its captures from being destroyed.
    void putAside(std::function<void()> task);

    /// Prevents further tasks from starting, halts the workers, and waits up to 200 ms for the tasks that other threads
    /// are running. A forked child has no workers and no such tasks. Idempotent.
    void close();

private:
    ExitGate() = default;

    bool enter();
    void leave();
    void haltWorkers();

    std::atomic<bool> isArmed_ = false;
    // The process that armed the gate. A forked child inherits the gate, but not the threads.
    std::atomic<int> process_ = 0;
    std::atomic<bool> isClosed_ = false;
    std::atomic<std::size_t> running_ = 0;

    std::mutex mutex_;
    std::condition_variable left_;
    // Guarded by mutex_.
    std::vector<std::weak_ptr<Worker>> workers_;
    std::vector<std::shared_ptr<Worker>> haltedWorkers_;
    std::vector<std::function<void()>> tasksPutAside_;
};

}  // namespace vorlane

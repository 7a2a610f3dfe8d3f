#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace vorlane {

/// Closes when the process exits, so that a host may leave `main()` or call `exit()` at any moment without a shutdown:
/// the network threads end before OpenSSL cleans up under them, and none of the host's callbacks runs while its statics
/// are being destroyed. One for the process, never destroyed. Any thread.
class ExitGate {
public:
    /// A thread that must have ended before the process exits.
    class Worker {
    public:
        virtual ~Worker();
        /// Ends the thread soon, calling nobody, and leaves everything it held as it is.
        virtual void haltForExit() = 0;
    };

    static ExitGate& shared();

    /// Has the gate closed when the process exits. To be called before the first thread starts and by whoever runs the
    /// main queue; repeated calls cost next to nothing.
    void arm();

    /// Has `worker` halted when the gate closes; returns false, and does not, when it is closed already.
    bool watch(const std::shared_ptr<Worker>& worker);

    /// Runs `task`, if any, and returns true; or, when the gate is closed, puts it aside unrun and undestroyed.
    bool run(std::function<void()> task);

    bool isClosed() const { return isClosed_; }

    /// Keeps `task`, and with it what it holds, from being run or destroyed.
    void putAside(std::function<void()> task);

    /// Lets no further task start, halts the workers, and waits up to 200 ms for tasks that other threads are running;
    /// in a forked child there are none of both. Idempotent.
    void close();

private:
    ExitGate() = default;

    bool enter();
    void leave();
    void haltWorkers();

    std::atomic<bool> isArmed_ = false;
    // The one that armed the gate; a child that it forks inherits the gate, but nothing that the gate watches.
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

#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "Platform/Linux/Application/ExitGate.h"
#include "Platform/Linux/Curl/CurlCompletion.h"
#include "Platform/Linux/Curl/CurlResolver.h"
#include "Platform/Linux/Curl/CurlSettings.h"
#include "Platform/Linux/Curl/EventDescriptor.h"

namespace vorlane {

class CurlDataTask;
class CurlMulti;

/// The network thread of one session, started by the first task. Any thread.
class CurlMultiLoop : public ExitGate::Worker,
                      public CurlResolver::Listener,
                      public std::enable_shared_from_this<CurlMultiLoop> {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    /// How many bytes the requests of unfinished tasks may hold. A task that is started beyond ends with an error, so
    /// that a burst while the network is slow does not exhaust the memory.
    static constexpr std::size_t kMostHeldBytes = std::size_t{64} << 20;

    /// Receives tasks that have ended, in order. Called on any thread, with no lock held.
    using Delivery = std::function<void(std::vector<CurlCompletion>)>;

    CurlMultiLoop(CurlSettings settings, Delivery delivery);
    /// To be called after `stop()` or before the first task.
    ~CurlMultiLoop() override;

    /// Count the bytes that a task's request holds, from its construction to its destruction.
    void holdBytes(std::size_t count) { heldBytes_ += count; }
    void releaseBytes(std::size_t count) { heldBytes_ -= count; }

    /// Performs a task. After `stop()` it ends as cancelled. A task ends with an error if the system has no thread or
    /// descriptor left; a later one tries again.
    void start(std::shared_ptr<CurlDataTask> task);
    /// Ends a started task as cancelled, unless it has ended.
    void cancel(std::shared_ptr<CurlDataTask> task);
    /// Delivers a task that ended without the network thread.
    void deliver(std::optional<CurlCompletion> completion);

    /// Ends all tasks as cancelled and joins the thread. At the deadline the thread is detached, and ends by itself.
    void stop(TimePoint deadline);

    void nameLookedUp(const CurlResolver::Answer& answer) override;
    void haltForExit() override;

private:
    enum class Phase : std::uint8_t { Unused, Running, Stopped, Halted };
    struct Mail {
        std::vector<std::shared_ptr<CurlDataTask>> started;
        std::vector<std::shared_ptr<CurlDataTask>> cancelled;
        std::vector<CurlResolver::Answer> names;

        bool isEmpty() const { return started.empty() && cancelled.empty() && names.empty(); }
    };

    std::thread startThread();
    void wake(std::unique_lock<std::mutex> lock);
    void leave(std::unique_lock<std::mutex> lock, Phase phase, TimePoint deadline);
    void run();
    void fail(CurlDataTask& task, const char* description);
    bool makeMulti();
    void failForWantOfDescriptors();
    void runMulti();
    bool takeMail(Mail& mail);
    void open(Mail& mail);
    bool maySleep();

    // Fixed at construction.
    const CurlSettings settings_;
    const Delivery delivery_;
    std::atomic<std::size_t> heldBytes_ = 0;

    std::mutex mutex_;
    std::condition_variable threadEnded_;
    // Guarded by mutex_.
    Phase phase_ = Phase::Unused;
    Mail mail_;
    bool isAsleep_ = false;
    bool isWatched_ = false;
    bool hasThread_ = false;
    std::thread thread_;
    // Made by the network thread before it sleeps for the first time, and kept.
    std::unique_ptr<const EventDescriptor> event_;
    // Network thread only.
    std::unique_ptr<CurlMulti> multi_;
};

}  // namespace vorlane

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "Platform/Linux/Application/ExitGate.h"
#include "Platform/Linux/Curl/CurlCertificates.h"
#include "Platform/Linux/Curl/CurlCompletion.h"
#include "Public/VLValue.h"

namespace vorlane {

class CurlDataTask;
class CurlMulti;

/// The network thread of one session, which starts with the first task and takes all of them. Any thread.
class CurlMultiLoop : public ExitGate::Worker, public std::enable_shared_from_this<CurlMultiLoop> {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    /// Takes tasks that have ended, in order; called on any thread, with no lock held.
    using Delivery = std::function<void(std::vector<CurlCompletion>)>;

    /// A request without progress for `timeout` seconds has timed out.
    CurlMultiLoop(TimeInterval timeout, CurlCertificates certificates, Delivery delivery);
    /// After `stop()`, or before the first task.
    ~CurlMultiLoop() override;

    /// Takes up a task; after `stop()` it ends as cancelled.
    void start(std::shared_ptr<CurlDataTask> task);
    /// Ends a task that was started, unless it has ended.
    void cancel(std::shared_ptr<CurlDataTask> task);
    /// Hands over a task that ended without the network thread.
    void deliver(std::optional<CurlCompletion> completion);

    /// Ends all tasks as cancelled and joins the thread. One that outlives the deadline is left to end by itself.
    void stop(TimePoint deadline);

    void haltForExit() override;

private:
    enum class Phase : std::uint8_t { unused, running, stopped, halted };
    struct Mail {
        std::vector<std::shared_ptr<CurlDataTask>> started;
        std::vector<std::shared_ptr<CurlDataTask>> cancelled;
    };

    bool startThread();
    void wake();
    void leave(std::unique_lock<std::mutex> lock, Phase phase, TimePoint deadline);
    void run();
    bool takeMail(Mail& mail);
    void open(Mail& mail);
    bool maySleep();

    // Fixed at construction.
    const std::chrono::milliseconds timeout_;
    const CurlCertificates certificates_;
    const Delivery delivery_;

    std::mutex mutex_;
    std::condition_variable threadEnded_;
    // Guarded by mutex_.
    Phase phase_ = Phase::unused;
    Mail mail_;
    bool isAsleep_ = false;
    bool hasThread_ = false;
    std::thread thread_;
    // The network thread's; others only wake it, under mutex_ and while it is asleep.
    std::unique_ptr<CurlMulti> multi_;
};

}  // namespace vorlane

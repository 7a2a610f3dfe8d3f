#include "Platform/Linux/Loop/LinuxMainQueue.h"

#define ASIO_STANDALONE
#define ASIO_NO_DEPRECATED
#include <algorithm>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "Platform/Linux/Application/ExitGate.h"

namespace vorlane {

namespace {

using SteadyClock = std::chrono::steady_clock;

SteadyClock::duration durationOf(TimeInterval seconds) {
    // Some thirty years. A longer delay would overflow the clock.
    constexpr TimeInterval kLongest = 1e9;
    if (!(seconds > 0)) return SteadyClock::duration::zero();
    const std::chrono::duration<TimeInterval> length(std::min(seconds, kLongest));
    return std::chrono::duration_cast<SteadyClock::duration>(length);
}

}  // namespace

struct LinuxMainQueue::Loop {
    void execute(std::uint64_t number, std::function<void()> task);
    void becomeCurrent();

    asio::io_context context;
    const asio::executor_work_guard<asio::io_context::executor_type> work = asio::make_work_guard(context);
    std::atomic<std::thread::id> thread = std::this_thread::get_id();
    std::atomic<bool> isStopRequested = false;
    std::atomic<bool> isClosed = false;
    // Tasks are numbered in the order of posting.
    std::atomic<std::uint64_t> newestNumber = 0;
    // Running thread only.
    std::uint64_t lastRunNumber = 0;
    std::size_t runCount = 0;

    std::mutex mutex;
    // Guarded by mutex.
    std::map<std::uint64_t, asio::steady_timer> timers;
};

void LinuxMainQueue::Loop::execute(std::uint64_t number, std::function<void()> task) {
    // First: `close()` takes handlers out on a thread that is not the running one.
    if (isClosed) return;
    lastRunNumber = number;
    if (ExitGate::shared().run(std::move(task))) ++runCount;
}

void LinuxMainQueue::Loop::becomeCurrent() {
    ExitGate::shared().arm();
    thread = std::this_thread::get_id();
}

LinuxMainQueue::LinuxMainQueue() : loop_(std::make_unique<Loop>()) {}

LinuxMainQueue::~LinuxMainQueue() { close(); }

void LinuxMainQueue::post(std::function<void()> task) {
    if (loop_->isClosed) return;
    asio::post(loop_->context, [loop = loop_.get(), number = ++loop_->newestNumber, task = std::move(task)]() mutable {
        loop->execute(number, std::move(task));
    });
}

void LinuxMainQueue::postAfter(TimeInterval delay, std::function<void()> task) try {
    const std::lock_guard lock(loop_->mutex);
    if (loop_->isClosed) return;
    const std::uint64_t number = ++loop_->newestNumber;
    auto& timer = loop_->timers.try_emplace(number, loop_->context, durationOf(delay)).first->second;
    timer.async_wait([loop = loop_.get(), number, task = std::move(task)](const std::error_code& error) mutable {
        {
            const std::lock_guard innerLock(loop->mutex);
            loop->timers.erase(number);
        }
        if (!error) loop->execute(number, std::move(task));
    });
} catch (const std::system_error&) {
    // Without a free file descriptor there are no timers: the task is dropped.
}

bool LinuxMainQueue::isCurrent() const { return loop_->thread == std::this_thread::get_id(); }

void LinuxMainQueue::run() {
    loop_->becomeCurrent();
    while (!loop_->isStopRequested.exchange(false) && !loop_->isClosed) loop_->context.run_one();
}

void LinuxMainQueue::runFor(TimeInterval seconds) {
    loop_->becomeCurrent();
    const auto deadline = SteadyClock::now() + durationOf(seconds);
    while (!loop_->isStopRequested.exchange(false) && !loop_->isClosed) {
        if (loop_->context.run_one_until(deadline) == 0) return;
    }
}

bool LinuxMainQueue::runUntil(const std::function<bool()>& isDone, TimeInterval seconds) {
    loop_->becomeCurrent();
    const auto deadline = SteadyClock::now() + durationOf(seconds);
    do {
        if (loop_->isStopRequested.exchange(false) || loop_->isClosed) break;
        if (loop_->context.poll_one() > 0) continue;
        if (isDone()) return true;
        loop_->context.run_one_until(deadline);
    } while (SteadyClock::now() < deadline);
    return isDone();
}

std::size_t LinuxMainQueue::poll() {
    loop_->becomeCurrent();
    const std::uint64_t newestNumber = loop_->newestNumber;
    const std::size_t runCount = loop_->runCount;
    loop_->lastRunNumber = 0;
    while (loop_->lastRunNumber <= newestNumber && loop_->context.poll_one() > 0) {
    }
    return loop_->runCount - runCount;
}

void LinuxMainQueue::stopRunning() {
    loop_->isStopRequested = true;
    asio::post(loop_->context, [] {});
}

void LinuxMainQueue::close() {
    {
        const std::lock_guard lock(loop_->mutex);
        loop_->isClosed = true;
        for (auto& [number, timer] : loop_->timers) timer.cancel();
    }
    // Takes the remaining handlers out, which drop their tasks now.
    loop_->context.poll();
    asio::post(loop_->context, [] {});  // wakes a thread inside run()
}

}  // namespace vorlane

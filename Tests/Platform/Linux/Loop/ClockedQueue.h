#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "Platform/Clock.h"
#include "Platform/DispatchQueue.h"

namespace vorlane {

/// A clock that a test sets.
class SetClock : public Clock {
public:
    double now() const override { return time; }
    double time = 1'700'000'000;
};

/// Keeps tasks until the clock has reached their time.
class ClockedQueue : public DispatchQueue {
public:
    explicit ClockedQueue(std::shared_ptr<SetClock> clock) : clock_(std::move(clock)) {}

    void post(std::function<void()> task) override { postAfter(0, std::move(task)); }
    void postAfter(TimeInterval delay, std::function<void()> task) override {
        delays.push_back(delay);
        if (delay > 0 && std::exchange(dropsNextTimer_, false)) return;
        tasks_.emplace(clock_->time + delay, std::move(task));
    }

    void advance(TimeInterval seconds) {
        const double target = clock_->time + seconds;
        while (!tasks_.empty() && tasks_.begin()->first <= target) {
            clock_->time = std::max(clock_->time, tasks_.begin()->first);
            const auto task = std::move(tasks_.begin()->second);
            tasks_.erase(tasks_.begin());
            task();
        }
        clock_->time = target;
    }

    /// Drops the next delayed task, like a loop without a free file descriptor.
    void dropNextTimer() { dropsNextTimer_ = true; }

    std::vector<TimeInterval> delays;

private:
    const std::shared_ptr<SetClock> clock_;
    bool dropsNextTimer_ = false;
    std::multimap<double, std::function<void()>> tasks_;
};

}  // namespace vorlane

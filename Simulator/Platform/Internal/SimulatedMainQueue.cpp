#include "Simulator/Platform/Internal/SimulatedMainQueue.h"

#include <algorithm>
#include <utility>

namespace vorlane {

using SteadyClock = std::chrono::steady_clock;

SimulatedMainQueue::SimulatedMainQueue(const Clock& clock, std::shared_ptr<ActivityCounter> activity)
    : clock_(clock), activity_(std::move(activity)) {}

void SimulatedMainQueue::post(std::function<void()> task) { postAfter(0, std::move(task)); }

void SimulatedMainQueue::postAfter(TimeInterval delay, std::function<void()> task) {
    if (delay > 0) {
        postAt(clock_.now() + delay, Kind::Application, std::move(task));
        return;
    }
    const std::lock_guard lock(mutex_);
    if (isStopped_) return;
    ++*activity_;
    tasks_.push_back(std::move(task));
    posted_.notify_all();
}

SimulatedMainQueue::Token SimulatedMainQueue::postAt(double time, Kind kind, std::function<void()> task) {
    const std::lock_guard lock(mutex_);
    const Token token = ++newestToken_;
    if (isStopped_) return token;
    ++*activity_;
    delayed_.emplace(time, DelayedTask{token, kind, std::move(task)});
    posted_.notify_all();
    return token;
}

void SimulatedMainQueue::cancel(Token token) {
    // Destroyed outside the lock, as in stop().
    std::function<void()> task;
    const std::lock_guard lock(mutex_);
    const auto found =
        std::ranges::find_if(delayed_, [token](const auto& entry) { return entry.second.token == token; });
    if (found == delayed_.end()) return;
    task = std::move(found->second.task);
    delayed_.erase(found);
}

void SimulatedMainQueue::runDueTasks(std::optional<SteadyClock::time_point> deadline) {
    while (const auto task = takeDueTask()) {
        task();
        if (deadline && SteadyClock::now() >= *deadline) return;
    }
}

std::function<void()> SimulatedMainQueue::takeDueTask() {
    const std::lock_guard lock(mutex_);
    std::function<void()> task;
    if (!tasks_.empty()) {
        task = std::move(tasks_.front());
        tasks_.pop_front();
    } else if (isDue()) {
        task = std::move(delayed_.begin()->second.task);
        delayed_.erase(delayed_.begin());
    }
    return task;
}

bool SimulatedMainQueue::isDue() const {
    return !tasks_.empty() || (!delayed_.empty() && delayed_.begin()->first <= clock_.now());
}

bool SimulatedMainQueue::hasDueTask() const {
    const std::lock_guard lock(mutex_);
    return isDue();
}

void SimulatedMainQueue::wait(const WaitOptions& options) {
    std::unique_lock lock(mutex_);
    while (!isDue() && !(options.isEnough && options.isEnough())) {
        if (options.deadline && SteadyClock::now() >= *options.deadline) return;
        if (const auto wake = wakeTime(options)) {
            posted_.wait_until(lock, *wake);
        } else {
            posted_.wait(lock);
        }
    }
}

std::optional<SteadyClock::time_point> SimulatedMainQueue::wakeTime(const WaitOptions& options) const {
    if (delayed_.empty() || !options.clockMoves) return options.deadline;
    // Rounded up, so that the task is due by then; clamped to an hour, because the clock's range exceeds the wait's.
    const std::chrono::duration<double> left(std::min(delayed_.begin()->first - clock_.now(), 3600.0));
    const auto due = SteadyClock::now() + std::chrono::ceil<std::chrono::milliseconds>(left);
    return options.deadline ? std::min(*options.deadline, due) : due;
}

std::shared_ptr<void> SimulatedMainQueue::beginWorkElsewhere() {
    ++workElsewhere_;
    return {nullptr, [self = shared_from_this()](void*) { self->endWorkElsewhere(); }};
}

void SimulatedMainQueue::endWorkElsewhere() {
    --workElsewhere_;
    // Locked, so that a thread that has just checked the condition is already waiting.
    const std::lock_guard lock(mutex_);
    posted_.notify_all();
}

std::optional<double> SimulatedMainQueue::nextDueTime() const {
    const std::lock_guard lock(mutex_);
    if (delayed_.empty()) return std::nullopt;
    return delayed_.begin()->first;
}

std::vector<double> SimulatedMainQueue::dueTimes() const {
    const std::lock_guard lock(mutex_);
    std::vector<double> times;
    for (const auto& [time, task] : delayed_) {
        if (task.kind == Kind::Application) times.push_back(time);
    }
    return times;
}

void SimulatedMainQueue::stop() {
    // Destroyed outside the lock, because destroying a task may run code of its poster.
    decltype(tasks_) tasks;
    decltype(delayed_) delayed;
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
    tasks_.swap(tasks);
    delayed_.swap(delayed);
}

}  // namespace vorlane

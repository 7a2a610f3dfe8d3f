#include "Simulator/Service/Http/WorkerThreads.h"

#include <utility>

namespace vorlane::service {
namespace {

constexpr std::size_t kMostThreads = 512;

}  // namespace

WorkerThreads::~WorkerThreads() { finish(); }

void WorkerThreads::run(std::function<void()> task) {
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
        if (idle_ < tasks_.size() && threads_.size() < kMostThreads) threads_.emplace_back([this] { work(); });
    }
    changed_.notify_one();
}

void WorkerThreads::finish() {
    std::vector<std::thread> threads;
    {
        const std::lock_guard lock(mutex_);
        isFinishing_ = true;
        threads.swap(threads_);
    }
    changed_.notify_all();
    for (auto& thread : threads) thread.join();
}

void WorkerThreads::work() {
    std::unique_lock lock(mutex_);
    while (true) {
        ++idle_;
        changed_.wait(lock, [this] { return !tasks_.empty() || isFinishing_; });
        --idle_;
        if (tasks_.empty()) return;
        auto task = std::move(tasks_.front());
        tasks_.pop_front();
        lock.unlock();
        task();
        task = nullptr;
        lock.lock();
    }
}

}  // namespace vorlane::service

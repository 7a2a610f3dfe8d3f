#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace vorlane::service {

/// Runs tasks that may block for long, each on a thread of its own; threads without a task take the next one. With 512
/// threads at work, further tasks wait.
class WorkerThreads {
public:
    WorkerThreads() = default;
    ~WorkerThreads();
    WorkerThreads(const WorkerThreads&) = delete;
    WorkerThreads& operator=(const WorkerThreads&) = delete;

    /// Not after finish().
    void run(std::function<void()> task);
    /// Returns when all tasks are done and all threads gone.
    void finish();

private:
    void work();

    std::mutex mutex_;
    std::condition_variable changed_;
    // Guarded by mutex_.
    std::deque<std::function<void()>> tasks_;
    std::vector<std::thread> threads_;
    std::size_t idle_ = 0;
    bool isFinishing_ = false;
};

}  // namespace vorlane::service

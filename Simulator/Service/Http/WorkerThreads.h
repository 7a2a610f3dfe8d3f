#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace vorlane::service {

/// Runs tasks that may block for a long time, each on a thread of its own. Idle threads are reused. At most 512 threads
/// run; further tasks wait.
class WorkerThreads {
public:
    WorkerThreads() = default;
    ~WorkerThreads();
    WorkerThreads(const WorkerThreads&) = delete;
    WorkerThreads& operator=(const WorkerThreads&) = delete;

    /// Must not be called after `finish()`.
    void run(std::function<void()> task);
    /// Returns after all tasks have run and all threads have ended.
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

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vorlane {

/// Looks up host names with the system's resolver for all sessions of the process, on at most four threads. A look-up
/// cannot be interrupted, so it must neither hold up a network thread nor leave a thread behind for each request.
/// Never destroyed. Any thread.
class CurlResolver {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    static constexpr std::size_t kMostThreads = 4;

    struct Answer {
        std::string name;
        /// Numeric, those to try first in front; IPv6 addresses in brackets. Empty if the name is unknown.
        std::vector<std::string> addresses;
    };

    class Listener {
    public:
        virtual ~Listener();
        /// Called on a look-up's thread, with no lock held.
        virtual void nameLookedUp(const Answer& answer) = 0;
    };

    static CurlResolver& shared();

    /// Reports the addresses of `name` to the listener. Requests for one name share a look-up. Dropped if the listener
    /// is gone before the look-up starts.
    void lookUp(const std::string& name, std::weak_ptr<Listener> listener);

    /// Waits for the threads to end, until the deadline; returns whether they have. A look-up that is still under way
    /// then ends on its own thread.
    bool waitUntilIdle(TimePoint deadline);

private:
    struct Question {
        std::string name;
        std::vector<std::weak_ptr<Listener>> listeners;
        bool isUnderWay = false;
    };
    using Questions = std::list<Question>;

    CurlResolver() = default;

    void run();
    Questions::iterator nextQuestion();
    void answer(std::unique_lock<std::mutex>& lock, Questions::iterator question);
    void endThread();

    std::mutex mutex_;
    std::condition_variable changed_;
    // Guarded by mutex_.
    Questions questions_;
    std::vector<std::thread> threads_;
    // Out of `threads_`, waiting to be joined.
    std::vector<std::thread> endedThreads_;
};

}  // namespace vorlane

#pragma once

#include <functional>

namespace vorlane {

/// A stretch of code on one thread that may hold locks, and so must not call the host. What it has to call is put off
/// until the outermost scope of the thread ends; declare the scope before the lock.
class CallOutScope {
public:
    CallOutScope();
    ~CallOutScope();
    CallOutScope(const CallOutScope&) = delete;
    CallOutScope& operator=(const CallOutScope&) = delete;

    /// Runs `callOut` at the end of the thread's outermost scope, in the order of the calls; now if there is no scope.
    static void callAfterwards(std::function<void()> callOut);
};

}  // namespace vorlane

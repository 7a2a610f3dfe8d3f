#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

#include "Platform/Internal/CallOutScope.h"

namespace vorlane {

/// Runs the resets that `ProcessWide` objects have registered, newest first, each once. Called when a platform is
/// installed.
void resetProcessWideObjects();
void resetWhenPlatformChanges(void (*reset)(void* object), void* object);

/// One T for the whole process: made on first use, exactly once, and never destroyed at process exit, so no order of
/// static destruction can crash a host. Installing another platform destroys it. Declare it static and `constinit`.
template <class T>
class ProcessWide {
public:
    constexpr ProcessWide() = default;

    /// `make` returns the object as a `std::unique_ptr<T>` and is called under a lock, the first time only. A call into
    /// the host that it leads to goes through `CallOutScope::callAfterwards()`, which runs it without the lock.
    template <class Make>
    T& get(Make make) {
        if (T* object = object_.load(std::memory_order_acquire)) return *object;
        const CallOutScope scope;
        const std::lock_guard lock(mutex_);
        if (T* object = object_.load(std::memory_order_relaxed)) return *object;
        T* object = make().release();
        resetWhenPlatformChanges([](void* self) { static_cast<ProcessWide*>(self)->reset(); }, this);
        object_.store(object, std::memory_order_release);
        return *object;
    }

    T& get() {
        return get([] { return std::make_unique<T>(); });
    }

private:
    void reset() { delete object_.exchange(nullptr); }

    std::mutex mutex_;
    std::atomic<T*> object_ = nullptr;
};

}  // namespace vorlane

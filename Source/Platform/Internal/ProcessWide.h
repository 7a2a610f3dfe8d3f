#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

namespace vorlane {

/// Runs every reset that `ProcessWide` objects asked for, newest first, and forgets them. Called when a platform is
/// installed.
void resetProcessWideObjects();
void resetWhenPlatformChanges(void (*reset)(void* object), void* object);

/// One T for the whole process: made on first use, exactly once, and never destroyed at process exit, so no order of
/// static destruction can crash a host. Installing another platform drops it. To be a static with constant
/// initialisation.
template <class T>
class ProcessWide {
public:
    constexpr ProcessWide() = default;

    /// `make` gives the object (a `std::unique_ptr<T>`) the first time.
    template <class Make>
    T& get(Make make) {
        if (T* object = object_.load(std::memory_order_acquire)) return *object;
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

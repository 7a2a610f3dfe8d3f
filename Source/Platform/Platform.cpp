#include "Platform/Platform.h"

#include <atomic>
#include <cassert>
#include <mutex>
#include <utility>
#include <vector>

#include "Platform/DispatchSemaphore.h"
#include "Platform/Internal/InstallObservers.h"
#include "Platform/Internal/ProcessWide.h"
#include "Platform/Internal/StorageFlusher.h"
#include "Platform/Internal/StorageFolder.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/NSTimer.h"

namespace vorlane {

namespace {

/// The current platform. Never destroyed: a late thread or a static object of the host may still use it.
struct PlatformHolder {
    std::mutex mutex;
    // Guarded by mutex.
    std::shared_ptr<Platform> owner;
    bool isStopped = false;
};

constinit std::atomic<Platform*> currentPlatform = nullptr;

constexpr std::chrono::seconds kLongestShutdown{2};

PlatformHolder& platformHolder() {
    static auto* const holder = new PlatformHolder;
    return *holder;
}

}  // namespace

struct Platform::Waits {
    std::mutex mutex;
    // Guarded by mutex.
    std::vector<std::weak_ptr<DispatchSemaphore>> semaphores;
    bool areAbandoned = false;
};

Platform::Platform() : waits_(std::make_unique<Waits>()), storage_(std::make_shared<StorageFlusher>()) {}

Platform::~Platform() = default;

void Platform::install(std::shared_ptr<Platform> platform) {
    if (platform && platform.get() == currentPlatform) return;
    // First: the previous platform's tasks use the objects that are reset next.
    shutdown();
    resetProcessWideObjects();
    announcePlatformInstall();
    auto& holder = platformHolder();
    const std::lock_guard lock(holder.mutex);
    currentPlatform = platform.get();
    holder.isStopped = false;
    // Destroys the previous platform after the lock is released.
    holder.owner.swap(platform);
}

Platform& Platform::current() {
    if (auto* platform = currentPlatform.load(std::memory_order_acquire)) return *platform;
    auto& holder = platformHolder();
    const std::lock_guard lock(holder.mutex);
    if (!holder.owner) {
        holder.owner = makeDefaultPlatform();
        holder.isStopped = false;
        currentPlatform.store(holder.owner.get(), std::memory_order_release);
    }
    return *holder.owner;
}

void Platform::shutdown() {
    auto& holder = platformHolder();
    std::shared_ptr<Platform> platform;
    {
        const std::lock_guard lock(holder.mutex);
        if (!holder.owner || std::exchange(holder.isStopped, true)) return;
        platform = holder.owner;
    }
    const auto deadline = std::chrono::steady_clock::now() + kLongestShutdown;
    // Beside everything else that ends, so that little is left for the end.
    if (!platform->storage().isIdle()) platform->storage().flush();
    platform->abandonWaits();
    platform->stop();
    platform->stopStorage(deadline);
    // From here on another process may use the folders.
    StorageFolder::releaseAll();
}

StorageFlusher& Platform::storage() { return *storage_; }

void Platform::stopStorage(std::chrono::steady_clock::time_point deadline) { storage_->stop(deadline); }

std::shared_ptr<DispatchSemaphore> Platform::makeSemaphore() {
    auto semaphore = std::make_shared<DispatchSemaphore>();
    const std::lock_guard lock(waits_->mutex);
    if (waits_->areAbandoned) semaphore->abandon();
    std::erase_if(waits_->semaphores, [](const auto& other) { return other.expired(); });
    waits_->semaphores.push_back(semaphore);
    return semaphore;
}

void Platform::abandonWaits() {
    const std::lock_guard lock(waits_->mutex);
    waits_->areAbandoned = true;
    for (const auto& waiting : waits_->semaphores) {
        if (const auto semaphore = waiting.lock()) semaphore->abandon();
    }
}

std::shared_ptr<NSTimer> Platform::scheduledTimer(TimeInterval seconds, std::function<void()> block) {
    auto timer = std::make_shared<NSTimer>(std::move(block));
    mainQueue()->postAfter(seconds, [timer] { timer->fire(); });
    return timer;
}

void assertMainQueue() { assert(Platform::current().mainQueue()->isCurrent()); }

void onMainQueue(std::function<void()> task) { Platform::current().mainQueue()->post(std::move(task)); }

}  // namespace vorlane

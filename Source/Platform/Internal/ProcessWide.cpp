#include "Platform/Internal/ProcessWide.h"

#include <utility>
#include <vector>

namespace vorlane {

namespace {

using Reset = std::pair<void (*)(void*), void*>;

struct Resets {
    std::mutex mutex;
    // Guarded by mutex.
    std::vector<Reset> resets;
};

/// Never destroyed, like the objects that it resets.
Resets& registeredResets() {
    static auto* const registered = new Resets;
    return *registered;
}

}  // namespace

void resetWhenPlatformChanges(void (*reset)(void* object), void* object) {
    auto& registered = registeredResets();
    const std::lock_guard lock(registered.mutex);
    registered.resets.emplace_back(reset, object);
}

void resetProcessWideObjects() {
    auto& registered = registeredResets();
    std::vector<Reset> resets;
    {
        const std::lock_guard lock(registered.mutex);
        resets.swap(registered.resets);
    }
    for (auto reset = resets.rbegin(); reset != resets.rend(); ++reset) reset->first(reset->second);
}

}  // namespace vorlane

#include "Platform/Internal/InstallObservers.h"

#include <mutex>
#include <utility>
#include <vector>

namespace vorlane {

namespace {

struct InstallObservers {
    std::mutex mutex;
    // Guarded by mutex.
    std::vector<void (*)(bool)> observers;
    bool wasInstalled = false;
};

/// Never destroyed: a late thread may still observe.
InstallObservers& installObservers() {
    static auto* const observers = new InstallObservers;
    return *observers;
}

}  // namespace

void observePlatformInstalls(void (*observer)(bool isFirst)) {
    auto& registered = installObservers();
    const std::lock_guard lock(registered.mutex);
    registered.observers.push_back(observer);
}

void announcePlatformInstall() {
    auto& registered = installObservers();
    std::vector<void (*)(bool)> observers;
    bool isFirst = false;
    {
        const std::lock_guard lock(registered.mutex);
        observers = registered.observers;
        isFirst = !std::exchange(registered.wasInstalled, true);
    }
    for (const auto observer : observers) observer(isFirst);
}

}  // namespace vorlane

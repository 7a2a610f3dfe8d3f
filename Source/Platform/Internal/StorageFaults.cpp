#include "Platform/Internal/StorageFaults.h"

#include <fmt/format.h>

#include <memory>
#include <system_error>

#include "Platform/Internal/ProcessWide.h"

namespace vorlane {

namespace {

constinit ProcessWide<StorageFaults> sharedFaults;

std::string messageOf(int error) { return std::generic_category().message(error); }

}  // namespace

StorageFaults& StorageFaults::shared() { return sharedFaults.get(); }

void StorageFaults::setHandler(Handler handler) {
    decltype(waiting_) waiting;
    {
        const std::lock_guard lock(mutex_);
        handler_ = handler;
        waiting.swap(waiting_);
    }
    for (const auto& [level, line] : waiting) handler(level, line);
}

void StorageFaults::failed(const std::string& path, const char* operation, int error) {
    {
        const std::lock_guard lock(mutex_);
        if (!causes_[{path, operation}].insert(error).second) return;
    }
    report(Level::Warning,
           fmt::format("Storage: {} cannot be {}: {}. Its values stay in memory.", path, operation, messageOf(error)));
}

void StorageFaults::succeeded(const std::string& path, const char* operation) {
    {
        const std::lock_guard lock(mutex_);
        if (causes_.empty() || causes_.erase({path, operation}) == 0) return;
    }
    report(Level::Info, fmt::format("Storage: {} can be {} again.", path, operation));
}

void StorageFaults::folderFailed(const std::string& folder, const std::string& reason) {
    {
        const std::lock_guard lock(mutex_);
        if (!failedFolders_.insert(folder).second) return;
    }
    report(Level::Error, fmt::format("Storage: nothing is stored in {}: {}.", folder, reason));
}

void StorageFaults::folderIsMissing(const std::string& placeholder, const std::string& reason) {
    {
        const std::lock_guard lock(mutex_);
        if (!failedFolders_.insert(placeholder).second) return;
    }
    report(Level::Error, fmt::format("Storage: {}. Nothing is stored, and the identity will not persist.", reason));
}

void StorageFaults::folderIsShortLived(const std::string& folder, const std::string& reason) {
    report(Level::Error, fmt::format("Storage: {}, so {} is used. The identity will not persist.", reason, folder));
}

void StorageFaults::folderSucceeded(const std::string& folder) {
    {
        const std::lock_guard lock(mutex_);
        if (failedFolders_.erase(folder) == 0) return;
    }
    report(Level::Info, fmt::format("Storage: {} can be used from now on.", folder));
}

void StorageFaults::report(Level level, const std::string& line) {
    Handler handler;
    {
        const std::lock_guard lock(mutex_);
        handler = handler_;
        if (!handler) waiting_.emplace_back(level, line);
    }
    if (handler) handler(level, line);
}

}  // namespace vorlane

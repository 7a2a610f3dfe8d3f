#include "Platform/Internal/StorageFlusher.h"

#include <filesystem>
#include <map>
#include <utility>

#include "Platform/Internal/FlushedGeneration.h"
#include "Platform/Internal/SerialDispatchQueue.h"
#include "Platform/Internal/StorageFolder.h"

namespace vorlane {

StorageFlusher::StorageFlusher() : queue_(std::make_unique<SerialDispatchQueue>("vorlane.storage")) {}

StorageFlusher::~StorageFlusher() = default;

void StorageFlusher::fileChanged(const std::string& path) {
    {
        const std::lock_guard lock(mutex_);
        if (isStopped_) return;
        changed_.insert(path);
        if (std::exchange(isDelayed_, true)) return;
    }
    queue_->postAfter(kDelay, [weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock()) self->flushChanged();
    });
}

bool StorageFlusher::isIdle() const {
    const std::lock_guard lock(mutex_);
    return changed_.empty() && !isFlushing_;
}

void StorageFlusher::flush(std::function<void()> completion) {
    queue_->post([weakSelf = weak_from_this(), completion = std::move(completion)] {
        if (const auto self = weakSelf.lock()) self->flushChanged();
        if (completion) completion();
    });
}

bool StorageFlusher::waitUntilIdle(std::chrono::steady_clock::time_point deadline) {
    if (isIdle()) return true;
    flush();
    queue_->waitUntilIdle(deadline);
    return isIdle();
}

void StorageFlusher::stop(std::chrono::steady_clock::time_point deadline) {
    {
        const std::lock_guard lock(mutex_);
        isStopped_ = true;
    }
    if (!isIdle()) flush();
    queue_->stop(deadline);
}

/// Storage thread only.
void StorageFlusher::flushChanged() {
    std::set<std::string> changed;
    {
        const std::lock_guard lock(mutex_);
        changed.swap(changed_);
        isDelayed_ = false;
        isFlushing_ = !changed.empty();
    }
    std::map<std::string, std::set<std::string>> byFolder;
    for (const auto& path : changed) byFolder[std::filesystem::path(path).parent_path().string()].insert(path);
    std::set<std::string> failed;
    for (const auto& [folder, paths] : byFolder) {
        failed.merge(FlushedGeneration::keep(folder, paths));
        if (StorageFolder::at(folder)->takeIsNew()) FlushedGeneration::flushPathOf(folder);
    }
    const std::lock_guard lock(mutex_);
    isFlushing_ = false;
    // The next change tries these again; a disk that fails is not asked all the time.
    changed_.merge(failed);
}

}  // namespace vorlane

#include "Platform/Internal/StorageFolder.h"

#include <sys/file.h>
#include <sys/stat.h>

#include <map>
#include <system_error>

#include "Platform/Internal/StorageFaults.h"
#include "Platform/NSFileManager.h"

namespace vorlane {

namespace {

/// The folders of the process. Never destroyed: a late thread may still write.
struct Folders {
    std::mutex mutex;
    // Guarded by mutex.
    std::map<std::string, std::shared_ptr<StorageFolder>> byPath;
};

Folders& folders() {
    static auto* const all = new Folders;
    return *all;
}

/// Root may do everything anyway.
bool isTrusted(uid_t user) { return user == geteuid() || user == 0; }

/// A link is followed only if this user or root made it: anybody can leave one in a folder like "/tmp".
FileDescriptor openFolder(const std::string& path) {
    auto folder = FileDescriptor::open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    // A link is no folder either, so the two flags may report it in two ways.
    if (folder.isOpen() || (errno != ELOOP && errno != ENOTDIR)) return folder;
    const int error = errno;
    struct stat link {};
    const bool isFollowed = ::lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode) && isTrusted(link.st_uid);
    errno = error;
    return isFollowed ? FileDescriptor::open(path, O_RDONLY | O_DIRECTORY) : FileDescriptor();
}

std::string systemMessage(int error) { return std::generic_category().message(error); }

}  // namespace

std::shared_ptr<StorageFolder> StorageFolder::at(const std::string& path) {
    auto& all = folders();
    const std::lock_guard lock(all.mutex);
    auto& folder = all.byPath[path];
    if (!folder) folder = std::make_shared<StorageFolder>(path);
    return folder;
}

void StorageFolder::releaseAll() {
    auto& all = folders();
    const std::lock_guard lock(all.mutex);
    for (const auto& [path, folder] : all.byPath) folder->release();
}

StorageFolder::Access StorageFolder::access() {
    const std::lock_guard lock(mutex_);
    return isStillThere() ? Access::Owned : open(false);
}

StorageFolder::Access StorageFolder::make() {
    const std::lock_guard lock(mutex_);
    return isStillThere() ? Access::Owned : open(true);
}

bool StorageFolder::takeIsNew() {
    const std::lock_guard lock(mutex_);
    return std::exchange(isNew_, false);
}

/// Whether the folder that this process has is the one at the path: an application may delete it at any time.
bool StorageFolder::isStillThere() const {
    struct stat held {};
    struct stat found {};
    if (!folder_.isOpen() || ::fstat(folder_.number(), &held) != 0 || held.st_nlink == 0) return false;
    return ::stat(path_.c_str(), &found) == 0 && found.st_dev == held.st_dev && found.st_ino == held.st_ino;
}

StorageFolder::Access StorageFolder::open(bool isMade) {
    folder_ = openFolder(path_);
    if (!folder_.isOpen() && errno == ENOENT) {
        if (!isMade) return Access::Missing;
        isNew_ = NSFileManager::createDirectoryAtPath(path_);
        const int error = errno;
        if (isNew_) folder_ = openFolder(path_);
        if (!isNew_) errno = error;
    }
    struct stat information {};
    if (!folder_.isOpen() || ::fstat(folder_.number(), &information) != 0) return refuse(systemMessage(errno));
    if (!isTrusted(information.st_uid)) return refuse("another user owns the folder");
    if ((information.st_mode & (S_IWGRP | S_IWOTH)) != 0) return refuse("other users may write to the folder");
    return lock();
}

StorageFolder::Access StorageFolder::lock() {
    int result = 0;
    do {
        result = ::flock(folder_.number(), LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    if (result != 0 && errno == EWOULDBLOCK) {
        folder_.close();
        StorageFaults::shared().folderFailed(
            path_, "another process uses the folder, so this one reads it, works in memory and schedules nothing");
        return Access::Foreign;
    }
    StorageFaults::shared().folderSucceeded(path_);
    return Access::Owned;
}

StorageFolder::Access StorageFolder::refuse(const std::string& reason) {
    folder_.close();
    StorageFaults::shared().folderFailed(path_, reason);
    return Access::Refused;
}

void StorageFolder::release() {
    const std::lock_guard lock(mutex_);
    folder_.close();
}

}  // namespace vorlane

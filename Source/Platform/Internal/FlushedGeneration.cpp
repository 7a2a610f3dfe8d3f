#include "Platform/Internal/FlushedGeneration.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "Platform/Internal/FileDescriptor.h"
#include "Platform/Internal/StorageFaults.h"
#include "Platform/NSFileManager.h"

namespace vorlane {

namespace {

constexpr const char* kSubfolder = "/.flushed";
constexpr const char* kNext = ".next";
constexpr const char* kRestored = ".restored";
constexpr mode_t kSubfolderMode = 0700;

std::string folderOf(const std::string& path) { return std::filesystem::path(path).parent_path().string(); }

bool flushBytes(const std::string& path) {
    const auto file = FileDescriptor::open(path, O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
    return file.isOpen() && ::fdatasync(file.number()) == 0;
}

bool flushFolder(const std::string& path) {
    const auto folder = FileDescriptor::open(path, O_RDONLY | O_DIRECTORY);
    return folder.isOpen() && ::fsync(folder.number()) == 0;
}

bool hasNoLinks(int error) {
    return error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK || error == EXDEV;
}

/// A second name for the file, so that its present generation stays while the file is replaced.
bool linkOrCopy(const std::string& from, const std::string& to) {
    ::unlink(to.c_str());
    if (::link(from.c_str(), to.c_str()) == 0) return true;
    if (!hasNoLinks(errno)) return false;
    Data bytes;
    if (const int error = NSFileManager::readFile(from, bytes); error != 0) {
        errno = error;
        return false;
    }
    const int error = NSFileManager::replaceFile(bytes, to);
    errno = error;
    return error == 0;
}

/// Moves a file over another. Where both are one file already, the system does nothing and leaves both names.
bool moveOver(const std::string& from, const std::string& to) {
    if (::rename(from.c_str(), to.c_str()) != 0) return false;
    ::unlink(from.c_str());
    return true;
}

/// The bytes of the file and of its next flushed generation, which is not in place yet.
bool flushNext(const std::string& path, const std::string& next) {
    if (!linkOrCopy(path, next)) return false;
    struct stat file {};
    struct stat copy {};
    const bool isCopy =
        ::stat(path.c_str(), &file) == 0 && ::stat(next.c_str(), &copy) == 0 && file.st_ino != copy.st_ino;
    return flushBytes(next) && (!isCopy || flushBytes(path));
}

}  // namespace

std::string FlushedGeneration::pathOf(const std::string& path) {
    const std::filesystem::path file(path);
    return file.parent_path().string() + kSubfolder + "/" + file.filename().string();
}

std::set<std::string> FlushedGeneration::keep(const std::string& folder, const std::set<std::string>& paths) {
    const auto subfolder = folder + kSubfolder;
    // Without it every link below fails, and says why.
    ::mkdir(subfolder.c_str(), kSubfolderMode);
    std::set<std::string> failed;
    const auto fail = [&failed](const std::string& path) {
        StorageFaults::shared().failed(path, "flushed", errno);
        failed.insert(path);
    };
    for (const auto& path : paths) {
        const auto generation = pathOf(path);
        const auto next = generation + kNext;
        if (!NSFileManager::fileExistsAtPath(path)) {
            forget(path);
        } else if (!flushNext(path, next) || !moveOver(next, generation)) {
            fail(path);
        }
    }
    // The flushed generations first: from here on the names of the files themselves may reach the disk in any order.
    for (const auto& changed : {subfolder, folder}) {
        if (flushFolder(changed) || errno == ENOENT) continue;
        for (const auto& path : paths) fail(path);
    }
    for (const auto& path : paths) {
        if (!failed.contains(path)) StorageFaults::shared().succeeded(path, "flushed");
    }
    return failed;
}

void FlushedGeneration::flushPathOf(const std::string& folder) {
    for (auto above = folderOf(folder); !above.empty(); above = folderOf(above)) {
        flushFolder(above);
        if (above == "/") break;
    }
}

bool FlushedGeneration::restore(const std::string& path) {
    const auto generation = pathOf(path);
    const auto copy = generation + kRestored;
    return linkOrCopy(generation, copy) && moveOver(copy, path);
}

void FlushedGeneration::forget(const std::string& path) { ::unlink(pathOf(path).c_str()); }

}  // namespace vorlane

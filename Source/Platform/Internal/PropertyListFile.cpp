#include "Platform/Internal/PropertyListFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <utility>

#include "Platform/Internal/DocumentLimits.h"
#include "Platform/Internal/FlushedGeneration.h"
#include "Platform/Internal/StorageFaults.h"
#include "Platform/Internal/StorageFlusher.h"
#include "Platform/Internal/StorageFolder.h"
#include "Platform/NSFileManager.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Platform/Platform.h"

namespace vorlane {

namespace {

constexpr const char* kRead = "read";
constexpr const char* kWritten = "written";

/// Of the three damaged files that are kept, the oldest goes, and the name of the newest becomes free.
void makeRoomForDamaged(const std::string& newest) {
    ::rename((newest + ".1").c_str(), (newest + ".2").c_str());
    ::rename(newest.c_str(), (newest + ".1").c_str());
}

/// Whether both paths name one file: a kill after the link below left it there.
bool isSameFile(const std::string& path, const std::string& other) {
    struct stat first {};
    struct stat second {};
    return ::stat(path.c_str(), &first) == 0 && ::stat(other.c_str(), &second) == 0 && first.st_ino == second.st_ino &&
           first.st_dev == second.st_dev;
}

std::string storageFolderOf(const std::string& path) {
    const auto folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

std::optional<Value> rootIn(const Data& bytes, PropertyListFile::Root kind) {
    auto root = NSPropertyListSerialization::propertyListWithData(bytes);
    const bool isFit = root && (kind == PropertyListFile::Root::DictionaryRoot ? root->is_object() : root->is_array());
    return isFit ? std::move(root) : std::nullopt;
}

}  // namespace

/// What all objects of one path know of the file.
struct PropertyListFile::Known {
    static std::shared_ptr<Known> at(const std::string& path) {
        // Never destroyed: a late thread may still write.
        static auto* const mutex = new std::mutex;
        static auto* const byPath = new std::map<std::string, std::shared_ptr<Known>>;
        const std::lock_guard lock(*mutex);
        auto& known = (*byPath)[path];
        if (!known) known = std::make_shared<Known>();
        return known;
    }

    std::mutex mutex;
    // Guarded by mutex. The bytes that the file holds, as far as they are known: `nullopt` after a failure.
    std::optional<Data> bytes;
};

struct PropertyListFile::State {
    State(std::string givenPath, Root givenRoot)
        : path(std::move(givenPath)),
          root(givenRoot),
          folder(path.empty() ? nullptr : StorageFolder::at(storageFolderOf(path))),
          known(path.empty() ? nullptr : Known::at(path)) {}

    Reading read();
    Reading readDamaged(bool isOwned);
    bool write(const Data& bytes);

    // Fixed at construction.
    const std::string path;
    const Root root;
    const std::shared_ptr<StorageFolder> folder;
    const std::shared_ptr<Known> known;

    // Whether the file holds, or may hold, what this object has not read.
    bool isUnread = false;
};

PropertyListFile::Reading PropertyListFile::State::read() {
    const auto access = folder->access();
    isUnread = access == StorageFolder::Access::Foreign || access == StorageFolder::Access::Refused;
    if (access == StorageFolder::Access::Refused) return {Status::Unreadable, {}};
    const bool isOwned = access == StorageFolder::Access::Owned;
    const std::lock_guard lock(known->mutex);
    known->bytes.reset();
    Data bytes;
    const int error = NSFileManager::readFile(path, bytes);
    if (error == ENOENT || error == ENOTDIR) {
        // The application has deleted the file: an earlier generation must not come back.
        if (isOwned) FlushedGeneration::forget(path);
        return {Status::Absent, {}};
    }
    if (error != 0 && error != EINVAL) {
        StorageFaults::shared().failed(path, kRead, error);
        isUnread = true;
        return {Status::Unreadable, {}};
    }
    StorageFaults::shared().succeeded(path, kRead);
    auto contents = error == 0 ? rootIn(bytes, root) : std::nullopt;
    if (!contents) return readDamaged(isOwned);
    known->bytes = std::move(bytes);
    return {Status::Contents, std::move(*contents)};
}

/// The flushed generation takes the place of a damaged file, which is kept under another name. A kill at any instant
/// leaves one of the two under the file's own name.
PropertyListFile::Reading PropertyListFile::State::readDamaged(bool isOwned) {
    Data bytes;
    const int error = NSFileManager::readFile(FlushedGeneration::pathOf(path), bytes);
    auto contents = error == 0 ? rootIn(bytes, root) : std::nullopt;
    if (isOwned) {
        const auto kept = path + ".corrupt";
        if (!isSameFile(path, kept)) makeRoomForDamaged(kept);
        // No link can be made to a folder, and nowhere on some file systems.
        const bool isKept = contents && (isSameFile(path, kept) || ::link(path.c_str(), kept.c_str()) == 0);
        if (!isKept) ::rename(path.c_str(), kept.c_str());
        if (contents) FlushedGeneration::restore(path);
    }
    if (!contents) return {Status::Malformed, {}};
    return {Status::Contents, std::move(*contents)};
}

bool PropertyListFile::State::write(const Data& bytes) {
    if (path.empty() || isUnread) return false;
    if (bytes.empty() || bytes.size() > DocumentLimits::kLongestPropertyList) {
        StorageFaults::shared().failed(path, kWritten, EFBIG);
        return false;
    }
    const auto access = folder->make();
    if (access != StorageFolder::Access::Owned) {
        // Whoever has the folder may have changed the file.
        isUnread = access == StorageFolder::Access::Foreign;
        return false;
    }
    {
        const std::lock_guard lock(known->mutex);
        if (known->bytes == bytes && NSFileManager::fileExistsAtPath(path)) return true;
        known->bytes.reset();
        const int error = NSFileManager::replaceFile(bytes, path);
        if (error != 0) {
            StorageFaults::shared().failed(path, kWritten, error);
            return false;
        }
        known->bytes = bytes;
    }
    StorageFaults::shared().succeeded(path, kWritten);
    Platform::current().storage().fileChanged(path);
    return true;
}

PropertyListFile::PropertyListFile(std::string path, Root root)
    : state_(std::make_unique<State>(std::move(path), root)) {}

PropertyListFile::~PropertyListFile() { Step::drop(*this); }

const std::string& PropertyListFile::path() const { return state_->path; }

PropertyListFile::Reading PropertyListFile::read() {
    if (state_->path.empty()) return {};
    return state_->read();
}

std::optional<Value> PropertyListFile::readAgain() {
    if (!state_->isUnread || state_->folder->access() == StorageFolder::Access::Foreign) return std::nullopt;
    auto reading = state_->read();
    return reading.status == Status::Contents ? std::optional(std::move(reading.contents)) : std::nullopt;
}

bool PropertyListFile::write(const Dictionary& contents) {
    return state_->write(NSPropertyListSerialization::dataWithPropertyList(contents));
}

bool PropertyListFile::write(const Array& contents) {
    return state_->write(NSPropertyListSerialization::dataWithPropertyList(contents));
}

bool PropertyListFile::writeBytes(const Data& propertyList) { return state_->write(propertyList); }

bool PropertyListFile::remove() {
    if (!isOwned()) return false;
    {
        const std::lock_guard lock(state_->known->mutex);
        state_->known->bytes.reset();
        if (::unlink(state_->path.c_str()) != 0) {
            if (errno == ENOENT) return true;
            StorageFaults::shared().failed(state_->path, "removed", errno);
            return false;
        }
    }
    state_->isUnread = false;
    Platform::current().storage().fileChanged(state_->path);
    return true;
}

bool PropertyListFile::isOwned() {
    if (state_->path.empty()) return false;
    const auto access = state_->folder->access();
    return access == StorageFolder::Access::Owned || access == StorageFolder::Access::Missing;
}

}  // namespace vorlane

#include "Tests/Platform/Storage/RecordedDisk.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <set>
#include <utility>

namespace vorlane {

namespace {

std::atomic<RecordedDisk*> inForce = nullptr;

std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

}  // namespace

/// What the disk holds, by the paths below the recorded folder.
struct RecordedDisk::Disk {
    /// A change of names that the disk may not have taken yet, in the folders that it concerns.
    struct Change {
        std::set<std::string> folders;
        std::vector<std::string> removed;
        std::string added;
        int file = 0;
        bool isFolder = false;
    };

    std::map<std::string, int> names;
    std::set<std::string> folders;
    std::vector<Change> pending;
    std::map<int, std::string> bytes;
    std::map<int, std::string> durableBytes;
    // The names as the process sees them.
    std::map<std::string, int> seen;

    void perform(const Operation& operation);
    void change(Change change);
    void apply(const Change& change);
    void applyPending(const Cut& cut);
    std::string bytesOf(int file, Cut::Bytes kind) const;
};

void RecordedDisk::Disk::change(Change change) {
    for (const auto& name : change.removed) seen.erase(name);
    if (!change.added.empty() && !change.isFolder) seen[change.added] = change.file;
    pending.push_back(std::move(change));
}

void RecordedDisk::Disk::apply(const Change& change) {
    for (const auto& name : change.removed) names.erase(name);
    if (change.isFolder) {
        folders.insert(change.added);
    } else if (!change.added.empty()) {
        names[change.added] = change.file;
    }
}

void RecordedDisk::Disk::perform(const Operation& operation) {
    const auto& [kind, file, path, target, written] = operation;
    switch (kind) {
        case Operation::Kind::Create:
            return change({{folderOf(path)}, {}, path, file, false});
        case Operation::Kind::Write:
            bytes[file] += written;
            return;
        case Operation::Kind::FlushFile:
            durableBytes[file] = bytes[file];
            return;
        case Operation::Kind::FlushFolder: {
            const auto first = std::stable_partition(pending.begin(), pending.end(), [&path = path](const auto& other) {
                return !other.folders.contains(path);
            });
            for (auto entry = first; entry != pending.end(); ++entry) apply(*entry);
            pending.erase(first, pending.end());
            return;
        }
        case Operation::Kind::Move:
            // Both names may stand for one file already; then the system does nothing.
            if (seen[path] == seen[target]) return;
            return change({{folderOf(path), folderOf(target)}, {path}, target, seen[path], false});
        case Operation::Kind::Link:
            return change({{folderOf(target)}, {}, target, seen[path], false});
        case Operation::Kind::Remove:
            return change({{folderOf(path)}, {path}, {}, 0, false});
        case Operation::Kind::MakeFolder:
            return change({{folderOf(path)}, {}, path, 0, true});
    }
}

void RecordedDisk::Disk::applyPending(const Cut& cut) {
    if (cut.names == Cut::Names::None) return;
    if (cut.names == Cut::Names::Some) {
        std::mt19937 random(cut.seed);
        std::shuffle(pending.begin(), pending.end(), random);
        pending.resize(pending.empty() ? 0 : random() % pending.size() + 1);
    }
    for (const auto& change : pending) apply(change);
}

std::string RecordedDisk::Disk::bytesOf(int file, Cut::Bytes kind) const {
    const auto whole = bytes.find(file);
    const auto durable = durableBytes.find(file);
    if (durable != durableBytes.end()) return durable->second;
    if (whole == bytes.end() || kind == Cut::Bytes::None) return {};
    if (kind == Cut::Bytes::Half) return whole->second.substr(0, whole->second.size() / 2);
    return kind == Cut::Bytes::Zeros ? std::string(whole->second.size(), '\0') : whole->second;
}

RecordedDisk::RecordedDisk(std::string folder) : folder_(std::move(folder)) { inForce = this; }

RecordedDisk::~RecordedDisk() { inForce = nullptr; }

RecordedDisk* RecordedDisk::current() { return inForce; }

std::size_t RecordedDisk::operationCount() const {
    const std::lock_guard lock(mutex_);
    return operations_.size();
}

void RecordedDisk::restore(std::size_t count, const Cut& cut, const std::string& folder) const {
    Disk disk;
    {
        const std::lock_guard lock(mutex_);
        for (std::size_t i = 0; i < count; ++i) disk.perform(operations_[i]);
    }
    disk.applyPending(cut);
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    const auto placeOf = [&](const std::string& path) { return folder + path.substr(folder_.size()); };
    for (const auto& made : disk.folders) std::filesystem::create_directories(placeOf(made));
    std::map<int, std::string> places;
    for (const auto& [path, file] : disk.names) {
        const auto place = placeOf(path);
        // What is in a folder that the disk does not know cannot be found.
        if (!std::filesystem::exists(folderOf(place))) continue;
        const auto [first, isFirst] = places.emplace(file, place);
        if (isFirst) {
            std::ofstream(place, std::ios::binary) << disk.bytesOf(file, cut.bytes);
        } else {
            std::filesystem::create_hard_link(first->second, place);
        }
    }
}

void RecordedDisk::add(Operation operation) {
    const std::lock_guard lock(mutex_);
    operations_.push_back(std::move(operation));
}

void RecordedDisk::opened(int descriptor, const std::string& path, bool isNew) {
    if (!isWithin(path)) return;
    const std::lock_guard lock(mutex_);
    filesByDescriptor_.erase(descriptor);
    foldersByDescriptor_.erase(descriptor);
    if (isNew) {
        filesByDescriptor_[descriptor] = ++newestFile_;
        operations_.push_back({Operation::Kind::Create, newestFile_, path, {}, {}});
    } else if (std::filesystem::is_directory(path)) {
        foldersByDescriptor_[descriptor] = path;
    } else {
        // Only the flush of such a file matters: which one it is, is known by its name.
        Disk disk;
        for (const auto& operation : operations_) disk.perform(operation);
        if (const auto found = disk.seen.find(path); found != disk.seen.end()) {
            filesByDescriptor_[descriptor] = found->second;
        }
    }
}

void RecordedDisk::written(int descriptor, const void* bytes, std::size_t count) {
    const std::lock_guard lock(mutex_);
    const auto found = filesByDescriptor_.find(descriptor);
    if (found == filesByDescriptor_.end()) return;
    operations_.push_back(
        {Operation::Kind::Write, found->second, {}, {}, std::string(static_cast<const char*>(bytes), count)});
}

void RecordedDisk::flushed(int descriptor) {
    const std::lock_guard lock(mutex_);
    if (const auto file = filesByDescriptor_.find(descriptor); file != filesByDescriptor_.end()) {
        operations_.push_back({Operation::Kind::FlushFile, file->second, {}, {}, {}});
    } else if (const auto folder = foldersByDescriptor_.find(descriptor); folder != foldersByDescriptor_.end()) {
        operations_.push_back({Operation::Kind::FlushFolder, 0, folder->second, {}, {}});
    }
}

void RecordedDisk::moved(const std::string& from, const std::string& to) {
    if (isWithin(from)) add({Operation::Kind::Move, 0, from, to, {}});
}

void RecordedDisk::linked(const std::string& from, const std::string& to) {
    if (isWithin(from)) add({Operation::Kind::Link, 0, from, to, {}});
}

void RecordedDisk::removed(const std::string& path) {
    if (isWithin(path)) add({Operation::Kind::Remove, 0, path, {}, {}});
}

void RecordedDisk::madeFolder(const std::string& path) {
    if (isWithin(path)) add({Operation::Kind::MakeFolder, 0, path, {}, {}});
}

}  // namespace vorlane

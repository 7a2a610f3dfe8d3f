#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace vorlane {

/// Records what the library does to the files of one folder, so that a power cut after any operation can be played:
/// what was not flushed is missing, incomplete or out of order. One at a time.
///
/// The model is POSIX: `fdatasync` makes the bytes of a file durable, `fsync` of a folder its names; nothing else does.
/// A change of a name is atomic.
class RecordedDisk {
public:
    /// How much of what was not flushed the disk has taken.
    struct Cut {
        enum class Names { None, All, Some };
        enum class Bytes { All, None, Half, Zeros };
        Names names = Names::None;
        Bytes bytes = Bytes::All;
        /// Chooses the names that "some" stands for, in any order.
        unsigned seed = 0;
    };

    /// Starts recording below `folder`, which is empty.
    explicit RecordedDisk(std::string folder);
    ~RecordedDisk();
    RecordedDisk(const RecordedDisk&) = delete;
    RecordedDisk& operator=(const RecordedDisk&) = delete;

    /// The recorder in force, or null.
    static RecordedDisk* current();

    /// How many operations were recorded.
    std::size_t operationCount() const;

    /// Makes `folder` what the disk holds after a power cut behind the first `count` operations. What stood there is
    /// removed.
    void restore(std::size_t count, const Cut& cut, const std::string& folder) const;

    /// Held by a wrapped system call from before it is made until it is recorded, so that the order is that of the
    /// disk.
    std::unique_lock<std::recursive_mutex> hold() { return std::unique_lock(mutex_); }

    // Called by the wrapped system calls after they have succeeded.
    void opened(int descriptor, const std::string& path, bool isNew);
    void written(int descriptor, const void* bytes, std::size_t count);
    void flushed(int descriptor);
    void moved(const std::string& from, const std::string& to);
    void linked(const std::string& from, const std::string& to);
    void removed(const std::string& path);
    void madeFolder(const std::string& path);

private:
    struct Operation {
        enum class Kind { Create, Write, FlushFile, FlushFolder, Move, Link, Remove, MakeFolder };
        Kind kind;
        int file = 0;
        std::string path, target, bytes;
    };
    struct Disk;

    bool isWithin(const std::string& path) const { return path.starts_with(folder_); }
    void add(Operation operation);

    const std::string folder_;

    mutable std::recursive_mutex mutex_;
    // Guarded by mutex_.
    std::vector<Operation> operations_;
    std::map<int, int> filesByDescriptor_;
    std::map<int, std::string> foldersByDescriptor_;
    int newestFile_ = 0;
};

}  // namespace vorlane

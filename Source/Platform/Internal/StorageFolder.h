#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "Platform/Internal/FileDescriptor.h"
#include "Public/VLExport.h"

namespace vorlane {

/// A folder of the library's files: who may use it, and which process does. One object for each folder of the process,
/// whatever number of platforms and stores use it. Any thread.
///
/// A process takes an advisory lock (`flock`) on the folder itself, so no file is needed for it and the system releases
/// it with the process. Where the file system knows no locks, processes do not see each other.
class VORLANE_EXPORT StorageFolder {
public:
    enum class Access {
        /// This process has the folder.
        Owned,
        /// There is no folder yet. Only `access()` returns this.
        Missing,
        /// Another process has the folder: its files may be read.
        Foreign,
        /// Another user (root excepted) owns the folder or may write to it, or it cannot be opened: nothing in it may
        /// be trusted.
        Refused
    };

    /// The folder at that path. It need not exist.
    static std::shared_ptr<StorageFolder> at(const std::string& path);

    /// Releases every folder of this process, so that another process may have them. A later write takes them back.
    static void releaseAll();

    explicit StorageFolder(std::string path) : path_(std::move(path)) {}

    /// Tries to have the folder, without making it. Reports why it is foreign or refused, once.
    Access access();
    /// The same, making the folder with mode 0700 if it is missing.
    Access make();

    /// Whether this process made the folder; resets the answer. Its entry in the folder above then has to be flushed.
    bool takeIsNew();

private:
    Access open(bool isMade);
    Access lock();
    bool isStillThere() const;
    Access refuse(const std::string& reason);
    void release();

    // Fixed at construction.
    const std::string path_;

    std::mutex mutex_;
    // Guarded by mutex_. The open folder, which holds the lock.
    FileDescriptor folder_;
    bool isNew_ = false;
};

}  // namespace vorlane

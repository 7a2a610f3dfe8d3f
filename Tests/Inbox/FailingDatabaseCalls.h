#pragma once

#include <fcntl.h>
#include <sqlite3.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <string_view>

#include <unistd.h>

namespace vorlane {

/// Lets SQLite's system calls fail, as a full disk or a read-only file system does. Goes back to normal with the
/// object. One at a time.
class FailingDatabaseCalls {
public:
    FailingDatabaseCalls() {
        replace("pwrite", reinterpret_cast<sqlite3_syscall_ptr>(&writeAt));
        replace("pwrite64", reinterpret_cast<sqlite3_syscall_ptr>(&writeAt));
        replace("open", reinterpret_cast<sqlite3_syscall_ptr>(&openFile));
    }
    ~FailingDatabaseCalls() {
        isFull() = false;
        isReadOnly() = false;
        for (const char* name : {"pwrite", "pwrite64", "open"}) replace(name, nullptr);
    }
    FailingDatabaseCalls(const FailingDatabaseCalls&) = delete;
    FailingDatabaseCalls& operator=(const FailingDatabaseCalls&) = delete;

    /// Every write says that there is no space left.
    void fillDisk() { isFull() = true; }
    void freeDisk() { isFull() = false; }
    /// Files can be opened for reading only.
    void makeReadOnly() { isReadOnly() = true; }

private:
    static std::atomic<bool>& isFull() {
        static std::atomic<bool> flag = false;
        return flag;
    }
    static std::atomic<bool>& isReadOnly() {
        static std::atomic<bool> flag = false;
        return flag;
    }

    static void replace(const char* name, sqlite3_syscall_ptr call) {
        auto* const system = sqlite3_vfs_find(nullptr);
        system->xSetSystemCall(system, name, call);
    }

    static ssize_t writeAt(int file, const void* bytes, size_t count, off_t place) {
        if (!isFull()) return ::pwrite(file, bytes, count, place);
        errno = ENOSPC;
        return -1;
    }

    static int openFile(const char* path, int flags, int mode) {
        const bool isWriting = (flags & O_ACCMODE) != O_RDONLY || (flags & O_CREAT) != 0;
        if (!isReadOnly() || !isWriting) return ::open(path, flags, mode);
        errno = EROFS;
        return -1;
    }
};

}  // namespace vorlane

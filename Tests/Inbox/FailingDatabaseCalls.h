#pragma once

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <limits>

namespace vorlane {

/// Makes SQLite's system calls fail, as a full disk, a read-only file system or a bad disk does. The destructor
/// restores them. One object at a time.
class FailingDatabaseCalls {
public:
    FailingDatabaseCalls() {
        replace("pwrite", reinterpret_cast<sqlite3_syscall_ptr>(&writeAt));
        replace("pwrite64", reinterpret_cast<sqlite3_syscall_ptr>(&writeAt));
        replace("pread", reinterpret_cast<sqlite3_syscall_ptr>(&readAt));
        replace("pread64", reinterpret_cast<sqlite3_syscall_ptr>(&readAt));
        replace("open", reinterpret_cast<sqlite3_syscall_ptr>(&openFile));
    }
    ~FailingDatabaseCalls() {
        state() = State();
        for (const char* name : {"pwrite", "pwrite64", "pread", "pread64", "open"}) replace(name, nullptr);
    }
    FailingDatabaseCalls(const FailingDatabaseCalls&) = delete;
    FailingDatabaseCalls& operator=(const FailingDatabaseCalls&) = delete;

    /// Every write fails with ENOSPC.
    void fillDisk() { state().isFull = true; }
    void freeDisk() { state().isFull = false; }
    /// Files can be opened for reading only.
    void makeReadOnly() { state().isReadOnly = true; }

    /// The read with this number from now on, counted from 1, fails once with EIO.
    void failRead(long number) { state().readsUntilFailure = number; }
    /// Returns whether that read has happened.
    bool hasFailedRead() const { return state().readsUntilFailure <= 0; }
    /// Every read that includes this byte of a file fails with EIO.
    void failReadsAt(off_t place) { state().badPlace = place; }
    void healReads() {
        state().readsUntilFailure = std::numeric_limits<long>::max();
        state().badPlace = -1;
    }

private:
    struct State {
        std::atomic<bool> isFull = false;
        std::atomic<bool> isReadOnly = false;
        std::atomic<long> readsUntilFailure = std::numeric_limits<long>::max();
        std::atomic<off_t> badPlace = -1;

        State& operator=(const State& other) {
            isFull = other.isFull.load();
            isReadOnly = other.isReadOnly.load();
            readsUntilFailure = other.readsUntilFailure.load();
            badPlace = other.badPlace.load();
            return *this;
        }
    };

    static State& state() {
        static State state;
        return state;
    }

    static void replace(const char* name, sqlite3_syscall_ptr call) {
        auto* const system = sqlite3_vfs_find(nullptr);
        system->xSetSystemCall(system, name, call);
    }

    static ssize_t writeAt(int file, const void* bytes, size_t count, off_t place) {
        if (!state().isFull) return ::pwrite(file, bytes, count, place);
        errno = ENOSPC;
        return -1;
    }

    static ssize_t readAt(int file, void* bytes, size_t count, off_t place) {
        const off_t bad = state().badPlace;
        const bool isBad = bad >= place && bad < place + static_cast<off_t>(count);
        if (--state().readsUntilFailure != 0 && !isBad) return ::pread(file, bytes, count, place);
        errno = EIO;
        return -1;
    }

    static int openFile(const char* path, int flags, int mode) {
        const bool isWriting = (flags & O_ACCMODE) != O_RDONLY || (flags & O_CREAT) != 0;
        if (!state().isReadOnly || !isWriting) return ::open(path, flags, mode);
        errno = EROFS;
        return -1;
    }
};

}  // namespace vorlane

#include "Tests/Platform/FailingSystemCalls.h"

#include <fcntl.h>
#include <sys/types.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <limits>

#include "Tests/Platform/Storage/RecordedDisk.h"

using vorlane::RecordedDisk;

namespace {

struct Faults {
    long long writableBytes = std::numeric_limits<long long>::max();
    long long pieceSize = std::numeric_limits<long long>::max();
    bool isInterruptedNext = false;
    long long readPieceSize = std::numeric_limits<long long>::max();
    bool isReadInterruptedNext = false;
    bool failsReads = false;
    bool failsRenames = false;
    int openError = 0;
};

// The library reads and writes its files on the thread that asks it to,
thread_local Faults faults;
// and flushes them on a thread of its own.
std::atomic<bool> failsFlushes = false;
std::atomic<bool> failsLinks = false;
std::atomic<int> flushCount = 0;
thread_local int flushCountOfThread = 0;

/// Makes the call, and has it recorded if it succeeds.
template <class Call, class Record>
auto recorded(Call call, Record record) {
    auto* const disk = RecordedDisk::current();
    if (disk == nullptr) return call();
    const auto held = disk->hold();
    const auto result = call();
    if (result >= 0) {
        const int error = errno;
        record(*disk, result);
        errno = error;
    }
    return result;
}

int flush(int (*flushReally)(int descriptor), int descriptor) {
    ++flushCount;
    ++flushCountOfThread;
    if (!failsFlushes) {
        return recorded([=] { return flushReally(descriptor); },
                        [=](RecordedDisk& disk, int /*result*/) { disk.flushed(descriptor); });
    }
    errno = EIO;
    return -1;
}

}  // namespace

extern "C" {

ssize_t __real_read(int descriptor, void* bytes, size_t count);
ssize_t __real_write(int descriptor, const void* bytes, size_t count);
int __real_fdatasync(int descriptor);
int __real_fsync(int descriptor);
int __real_open(const char* path, int flags, ...);
int __real_rename(const char* from, const char* to);
int __real_link(const char* from, const char* to);
int __real_mkostemp(char* path, int flags);
int __real_mkdir(const char* path, mode_t mode);
int __real_unlink(const char* path);

ssize_t __wrap_read(int descriptor, void* bytes, size_t count) {
    if (faults.failsReads) {
        errno = EIO;
        return -1;
    }
    if (faults.readPieceSize == std::numeric_limits<long long>::max()) return __real_read(descriptor, bytes, count);
    faults.isReadInterruptedNext = !faults.isReadInterruptedNext;
    if (faults.isReadInterruptedNext) {
        errno = EINTR;
        return -1;
    }
    return __real_read(descriptor, bytes, std::min(count, static_cast<size_t>(faults.readPieceSize)));
}

ssize_t __wrap_write(int descriptor, const void* bytes, size_t count) {
    constexpr auto kNoLimit = std::numeric_limits<long long>::max();
    if (faults.pieceSize != kNoLimit) {
        faults.isInterruptedNext = !faults.isInterruptedNext;
        if (faults.isInterruptedNext) {
            errno = EINTR;
            return -1;
        }
    }
    if (faults.writableBytes <= 0) {
        errno = ENOSPC;
        return -1;
    }
    const auto allowed = std::min({static_cast<long long>(count), faults.pieceSize, faults.writableBytes});
    const auto written = recorded(
        [=] { return __real_write(descriptor, bytes, static_cast<size_t>(allowed)); },
        [=](RecordedDisk& disk, ssize_t length) { disk.written(descriptor, bytes, static_cast<size_t>(length)); });
    if (written > 0 && faults.writableBytes != kNoLimit) faults.writableBytes -= written;
    return written;
}

int __wrap_fdatasync(int descriptor) { return flush(__real_fdatasync, descriptor); }

int __wrap_fsync(int descriptor) { return flush(__real_fsync, descriptor); }

int __wrap_open(const char* path, int flags, ...) {
    if (faults.openError != 0) {
        errno = faults.openError;
        return -1;
    }
    va_list arguments;
    va_start(arguments, flags);
    const int mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(arguments, int) : 0;
    va_end(arguments);
    return recorded([=] { return __real_open(path, flags, mode); },
                    [=](RecordedDisk& disk, int descriptor) { disk.opened(descriptor, path, false); });
}

int __wrap_mkostemp(char* path, int flags) {
    return recorded([=] { return __real_mkostemp(path, flags); },
                    [=](RecordedDisk& disk, int descriptor) { disk.opened(descriptor, path, true); });
}

int __wrap_mkdir(const char* path, mode_t mode) {
    return recorded([=] { return __real_mkdir(path, mode); },
                    [=](RecordedDisk& disk, int /*result*/) { disk.madeFolder(path); });
}

int __wrap_unlink(const char* path) {
    return recorded([=] { return __real_unlink(path); },
                    [=](RecordedDisk& disk, int /*result*/) { disk.removed(path); });
}

int __wrap_link(const char* from, const char* to) {
    if (!failsLinks) {
        return recorded([=] { return __real_link(from, to); },
                        [=](RecordedDisk& disk, int /*result*/) { disk.linked(from, to); });
    }
    errno = EPERM;
    return -1;
}

int __wrap_rename(const char* from, const char* to) {
    if (!faults.failsRenames) {
        return recorded([=] { return __real_rename(from, to); },
                        [=](RecordedDisk& disk, int /*result*/) { disk.moved(from, to); });
    }
    errno = EROFS;
    return -1;
}
}

namespace vorlane {

FailingSystemCalls::FailingSystemCalls() { faults = {}; }
FailingSystemCalls::~FailingSystemCalls() {
    faults = {};
    failsFlushes = false;
    failsLinks = false;
}
void FailingSystemCalls::failWritesFrom(long long byte) { faults.writableBytes = byte; }
void FailingSystemCalls::writeInPieces(long long bytes) { faults.pieceSize = bytes; }
void FailingSystemCalls::readInPieces(long long bytes) { faults.readPieceSize = bytes; }
void FailingSystemCalls::failReads() { faults.failsReads = true; }
void FailingSystemCalls::failOpening(int error) { faults.openError = error; }
void FailingSystemCalls::failFlushes() { failsFlushes = true; }
void FailingSystemCalls::failLinks() { failsLinks = true; }
int FailingSystemCalls::flushes() { return flushCount; }
int FailingSystemCalls::flushesOfThisThread() { return flushCountOfThread; }
void FailingSystemCalls::failRenames() { faults.failsRenames = true; }

}  // namespace vorlane

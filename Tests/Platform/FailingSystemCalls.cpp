#include "Tests/Platform/FailingSystemCalls.h"

#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <limits>

namespace {

struct Faults {
    long long writableBytes = std::numeric_limits<long long>::max();
    long long pieceSize = std::numeric_limits<long long>::max();
    bool isInterruptedNext = false;
    long long readPieceSize = std::numeric_limits<long long>::max();
    bool isReadInterruptedNext = false;
    bool failsReads = false;
    bool failsFlushes = false;
    bool failsRenames = false;
};

// The library writes its files on the thread that asks it to.
thread_local Faults faults;

}  // namespace

extern "C" {

ssize_t __real_read(int descriptor, void* bytes, size_t count);
ssize_t __real_write(int descriptor, const void* bytes, size_t count);
int __real_fdatasync(int descriptor);
int __real_rename(const char* from, const char* to);

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
    const auto written = __real_write(descriptor, bytes, static_cast<size_t>(allowed));
    if (written > 0 && faults.writableBytes != kNoLimit) faults.writableBytes -= written;
    return written;
}

int __wrap_fdatasync(int descriptor) {
    if (!faults.failsFlushes) return __real_fdatasync(descriptor);
    errno = EIO;
    return -1;
}

int __wrap_rename(const char* from, const char* to) {
    if (!faults.failsRenames) return __real_rename(from, to);
    errno = EROFS;
    return -1;
}
}

namespace vorlane {

FailingSystemCalls::FailingSystemCalls() { faults = {}; }
FailingSystemCalls::~FailingSystemCalls() { faults = {}; }
void FailingSystemCalls::failWritesFrom(long long byte) { faults.writableBytes = byte; }
void FailingSystemCalls::writeInPieces(long long bytes) { faults.pieceSize = bytes; }
void FailingSystemCalls::readInPieces(long long bytes) { faults.readPieceSize = bytes; }
void FailingSystemCalls::failReads() { faults.failsReads = true; }
void FailingSystemCalls::failFlushes() { faults.failsFlushes = true; }
void FailingSystemCalls::failRenames() { faults.failsRenames = true; }

}  // namespace vorlane

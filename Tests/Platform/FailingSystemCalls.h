#pragma once

namespace vorlane {

/// Lets system calls of the library fail, as a full disk or a dying device does. Goes back to normal with the object.
/// One at a time.
class FailingSystemCalls {
public:
    FailingSystemCalls();
    ~FailingSystemCalls();
    FailingSystemCalls(const FailingSystemCalls&) = delete;
    FailingSystemCalls& operator=(const FailingSystemCalls&) = delete;

    /// Writing fails from the byte with this number on; what is before is written.
    void failWritesFrom(long long byte);
    /// Every write takes at most that many bytes, and every other one is interrupted.
    void writeInPieces(long long bytes);
    /// The same for reading.
    void readInPieces(long long bytes);
    void failReads();
    void failFlushes();
    void failRenames();
};

}  // namespace vorlane

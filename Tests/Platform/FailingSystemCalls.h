#pragma once

namespace vorlane {

/// Makes system calls of the library fail, as a full disk or a dying device does, until the object goes. One at a time.
/// All but flushes and links concern the thread that made the object.
class FailingSystemCalls {
public:
    FailingSystemCalls();
    ~FailingSystemCalls();
    FailingSystemCalls(const FailingSystemCalls&) = delete;
    FailingSystemCalls& operator=(const FailingSystemCalls&) = delete;

    /// Writing fails from the byte with this number on; the bytes before it are written.
    void failWritesFrom(long long byte);
    /// Each write takes at most that many bytes, and every other one is interrupted.
    void writeInPieces(long long bytes);
    /// The same for reading.
    void readInPieces(long long bytes);
    void failReads();
    void failOpening(int error);
    void failRenames();
    /// On every thread, as the next.
    void failFlushes();
    /// As on a file system without hard links.
    void failLinks();

    /// How many flushes there were so far: in the process, and on the calling thread.
    static int flushes();
    static int flushesOfThisThread();
};

}  // namespace vorlane

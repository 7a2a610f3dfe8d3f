#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

class SerialDispatchQueue;

/// Makes the files that the library replaced durable, on the serial queue "vorlane.storage": the only place where it
/// waits for a disk. One for each platform. Any thread.
///
/// Several changes share one flush. The thread starts with the first change and ends when there have been none for a
/// while. A process that exits does not wait for it.
class VORLANE_EXPORT StorageFlusher : public std::enable_shared_from_this<StorageFlusher> {
public:
    /// The seconds from a change to the flush that makes it durable.
    static constexpr TimeInterval kDelay = 0.25;

    StorageFlusher();
    ~StorageFlusher();
    StorageFlusher(const StorageFlusher&) = delete;
    StorageFlusher& operator=(const StorageFlusher&) = delete;

    /// The file was replaced or removed and is to be made durable soon. After `stop()` nothing is.
    void fileChanged(const std::string& path);

    /// Whether no file waits for its flush.
    bool isIdle() const;

    /// Flushes at once what has changed so far, then calls `completion`, if any, on the storage thread.
    void flush(std::function<void()> completion = nullptr);

    /// Waits until `isIdle()` or the deadline; returns whether it is idle.
    bool waitUntilIdle(std::chrono::steady_clock::time_point deadline);

    /// Flushes what has changed until the deadline and joins the thread.
    void stop(std::chrono::steady_clock::time_point deadline);

private:
    void flushChanged();

    // Fixed at construction.
    const std::unique_ptr<SerialDispatchQueue> queue_;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::set<std::string> changed_;
    bool isDelayed_ = false;
    bool isFlushing_ = false;
    bool isStopped_ = false;
};

}  // namespace vorlane

#include "Network/VLRequestCounter.h"

#include <mutex>

#include "Platform/Internal/ProcessWide.h"

namespace vorlane {
namespace {

constexpr std::uint32_t kFirstId = 1;
constexpr std::uint32_t kEndOfIds = 10000;

struct Counter {
    std::mutex mutex;
    // Guarded by mutex.
    std::uint32_t next = kFirstId;
};

constinit ProcessWide<Counter> processCounter;

}  // namespace

std::uint32_t VLRequestCounter::incrementAndGetCounter() {
    Counter& counter = processCounter.get();
    const std::lock_guard lock(counter.mutex);
    if (counter.next == kEndOfIds) counter.next = kFirstId;
    return counter.next++;
}

}  // namespace vorlane

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "Public/VLExport.h"

namespace vorlane {

class DispatchQueue;

/// Counts units of work and posts a task when none is left. Any thread.
class VORLANE_EXPORT DispatchGroup {
public:
    void enter();
    /// To be called once for each `enter()`.
    void leave();

    /// Posts `task` to `queue` when the group becomes empty; at once if it is empty.
    void notify(std::shared_ptr<DispatchQueue> queue, std::function<void()> task);

private:
    using Notice = std::pair<std::shared_ptr<DispatchQueue>, std::function<void()>>;

    std::mutex mutex_;
    // Guarded by mutex_.
    std::size_t count_ = 0;
    std::vector<Notice> notices_;
};

}  // namespace vorlane

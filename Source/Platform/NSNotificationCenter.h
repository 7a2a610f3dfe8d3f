#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Public/VLExport.h"

namespace vorlane {

/// A broadcast notification.
struct NSNotification {
    std::string name;
};

/// Broadcasts notifications within the process. Any thread. Observers run on the posting thread, without a lock held.
class VORLANE_EXPORT NSNotificationCenter {
public:
    using Token = std::uint64_t;
    using Observer = std::function<void(const NSNotification&)>;

    /// Calls `observer` for each notification of that name until the token is removed. Observers run in the order in
    /// which they were added.
    Token addObserver(std::string name, Observer observer);

    /// Ignores an unknown token. A notification that another thread is posting may still reach the observer once.
    void removeObserver(Token token);

    void postNotificationName(const std::string& name);

private:
    struct Registration {
        Token token;
        std::string name;
        std::shared_ptr<const Observer> observer;
    };

    bool isRegistered(Token token);

    std::mutex mutex_;
    // Guarded by mutex_.
    Token nextToken_ = 1;
    std::vector<Registration> registrations_;
};

}  // namespace vorlane

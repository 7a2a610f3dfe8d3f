#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Public/VLExport.h"

namespace vorlane {

/// What is broadcast: a name, told to every observer of that name.
struct NSNotification {
    std::string name;
};

/// The in-process broadcaster. Any thread; an observer runs on the posting thread, with no lock held.
class VORLANE_EXPORT NSNotificationCenter {
public:
    using Token = std::uint64_t;
    using Observer = std::function<void(const NSNotification&)>;

    /// Calls `observer` for each notification of that name until the token is removed. Observers run in the order they
    /// were added.
    Token addObserver(std::string name, Observer observer);

    /// An unknown token is ignored. A post under way on another thread may still reach the observer once.
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

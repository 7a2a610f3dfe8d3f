#include "Platform/NSNotificationCenter.h"

#include <algorithm>
#include <utility>

namespace vorlane {

NSNotificationCenter::Token NSNotificationCenter::addObserver(std::string name, Observer observer) {
    const std::lock_guard lock(mutex_);
    const auto token = nextToken_++;
    registrations_.push_back({token, std::move(name), std::make_shared<const Observer>(std::move(observer))});
    return token;
}

void NSNotificationCenter::removeObserver(Token token) {
    // Released after the lock: destroying an observer may run host code.
    std::shared_ptr<const Observer> removed;
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(registrations_.begin(), registrations_.end(),
                                    [token](const Registration& registration) { return registration.token == token; });
    if (found == registrations_.end()) return;
    removed = std::move(found->observer);
    registrations_.erase(found);
}

void NSNotificationCenter::postNotificationName(const std::string& name) {
    std::vector<std::pair<Token, std::shared_ptr<const Observer>>> observers;
    {
        const std::lock_guard lock(mutex_);
        for (const auto& registration : registrations_) {
            if (registration.name == name) observers.emplace_back(registration.token, registration.observer);
        }
    }
    const NSNotification notification{name};
    for (const auto& [token, observer] : observers) {
        if (*observer && isRegistered(token)) (*observer)(notification);
    }
}

bool NSNotificationCenter::isRegistered(Token token) {
    const std::lock_guard lock(mutex_);
    return std::any_of(registrations_.begin(), registrations_.end(),
                       [token](const Registration& registration) { return registration.token == token; });
}

}  // namespace vorlane

#include "Simulator/Platform/SimulatedApplication.h"

#include <utility>

namespace vorlane {

namespace {

Dictionary backgroundTaskFields(const char* action, UIBackgroundTaskIdentifier identifier, const std::string& name) {
    return {{"action", action}, {"name", name}, {"identifier", identifier}};
}

}  // namespace

void SimulatedApplication::registerForRemoteNotifications() {
    ++remoteNotificationRegistrations_;
    tell("registerForRemoteNotifications", {});
}

void SimulatedApplication::setMinimumBackgroundFetchInterval(TimeInterval seconds) {
    backgroundFetchIntervals_.push_back(seconds);
    tell("minimumBackgroundFetchInterval", {{"seconds", seconds}});
}

std::vector<std::string> SimulatedApplication::begunBackgroundTasks() const {
    const std::lock_guard lock(mutex_);
    return begunBackgroundTasks_;
}

void SimulatedApplication::setEventObserver(
    std::function<void(const std::string& event, const Dictionary& fields)> observer) {
    const std::lock_guard lock(mutex_);
    eventObserver_ = std::move(observer);
}

void SimulatedApplication::backgroundTaskDidBegin(UIBackgroundTaskIdentifier identifier, const std::string& name) {
    {
        const std::lock_guard lock(mutex_);
        begunBackgroundTasks_.push_back(name);
    }
    tell("backgroundTask", backgroundTaskFields("begin", identifier, name));
}

void SimulatedApplication::backgroundTaskDidEnd(UIBackgroundTaskIdentifier identifier, const std::string& name) {
    tell("backgroundTask", backgroundTaskFields("end", identifier, name));
}

void SimulatedApplication::backgroundTaskDidExpire(UIBackgroundTaskIdentifier identifier, const std::string& name) {
    tell("backgroundTask", backgroundTaskFields("expired", identifier, name));
}

void SimulatedApplication::tell(const std::string& event, Dictionary fields) {
    decltype(eventObserver_) observer;
    {
        const std::lock_guard lock(mutex_);
        observer = eventObserver_;
    }
    if (observer) observer(event, fields);
}

}  // namespace vorlane

#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Platform/UNUserNotificationCenter.h"
#include "Public/VLValue.h"
#include "Simulator/Platform/SimulatedUser.h"

namespace vorlane {

class DispatchQueue;

/// The simulated phone's notification centre: asks the simulated user, and reports the settings that a test has set.
/// Any thread; handlers run on a queue of its own, as on a real phone.
class SimulatedUserNotificationCenter : public UNUserNotificationCenter,
                                        public std::enable_shared_from_this<SimulatedUserNotificationCenter> {
public:
    using Tell = std::function<void(const std::string& event, const Dictionary& fields)>;

    SimulatedUserNotificationCenter(std::shared_ptr<SimulatedUser> user, std::shared_ptr<DispatchQueue> mainQueue,
                                    std::shared_ptr<DispatchQueue> answerQueue, Tell tell);

    /// Shows a prompt every time. An undetermined answer grants nothing and is not an error.
    void requestAuthorizationWithOptions(std::uint64_t options, AuthorizationHandler completionHandler) override;
    void getNotificationSettingsWithCompletionHandler(SettingsHandler completionHandler) override;
    void getNotificationCategoriesWithCompletionHandler(CategoriesHandler completionHandler) override;
    void setNotificationCategories(const Categories& categories) override;

    UNNotificationSettings notificationSettings() const;
    void setNotificationSettings(const UNNotificationSettings& settings);
    Categories notificationCategories() const;

private:
    void answered(SimulatedUser::Answer answer, std::uint64_t options, const AuthorizationHandler& handler);

    // Fixed at construction.
    const std::shared_ptr<SimulatedUser> user_;
    const std::shared_ptr<DispatchQueue> mainQueue_;
    const std::shared_ptr<DispatchQueue> answerQueue_;
    const Tell tell_;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    UNNotificationSettings settings_;
    Categories categories_;
};

}  // namespace vorlane

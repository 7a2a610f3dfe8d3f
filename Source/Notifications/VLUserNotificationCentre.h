#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "Platform/NSError.h"
#include "Public/VLUserNotificationSettings.h"

namespace vorlane {

/// The user's notification permissions, whatever the generation of the platform.
class VLUserNotificationCentre {
public:
    /// The status on the authorisation scale of VLUserNotificationSettings.
    using AuthorisationHandler = std::function<void(std::int64_t status, std::optional<NSError> error)>;
    using SettingsHandler = std::function<void(const VLUserNotificationSettings& settings)>;

    virtual ~VLUserNotificationCentre() = default;

    /// `requestNotificationAuthorisation:completionHandler:` asks the user. `options` are the platform's bits (1 badge,
    /// 2 sound, 4 alert, … 64 provisional); bits that the platform does not know are ignored. The handler may be empty;
    /// it runs once, on any queue, possibly inside the call.
    virtual void requestNotificationAuthorisation(std::uint64_t options, AuthorisationHandler completionHandler) = 0;

    /// `getNotificationSettingsWithCompletionHandler:` calls the handler once, on the main queue, after this call has
    /// returned.
    virtual void getNotificationSettingsWithCompletionHandler(SettingsHandler completionHandler) = 0;

    virtual bool isProvisionalAuthorisationSupported() const = 0;
};

/// The identifier of the category that every authorisation request registers.
inline constexpr const char* VLBasicNotificationCategory = "vl-basic-category";

}  // namespace vorlane

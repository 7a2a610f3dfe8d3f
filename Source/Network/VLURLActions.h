#pragma once

#include <memory>
#include <optional>

#include "Platform/NSURL.h"

namespace vorlane {

class UIApplication;
class VLPermissionService;

/// Follows links of the library's own scheme, such as "vorlane://notification-yes", which the buttons of interstitials
/// carry. Main queue only.
class VLURLActions {
public:
    /// `initWithPermissionService:application:`
    VLURLActions(std::shared_ptr<VLPermissionService> permissionService, std::weak_ptr<UIApplication> application);

    /// `handleVorlaneActionURL:` follows a link of the library. Returns false for any other link and for `nullopt`. The
    /// scheme is compared without case, the host with case. Path, query and fragment are ignored.
    bool handleVorlaneActionURL(const std::optional<NSURL>& url);

    // The action of each link. Each returns true.
    bool onNotificationYes();
    bool onNotificationNo();
    bool onLocationYes();
    bool onLocationNo();
    bool onLoadSettings();
    bool onNotificationAndLocationYes();
    bool onNotificationAndLocationNo();

private:
    // Fixed at construction.
    const std::shared_ptr<VLPermissionService> permissionService_;
    const std::weak_ptr<UIApplication> application_;
};

}  // namespace vorlane

#pragma once

#include <memory>
#include <optional>

#include "Platform/NSURL.h"

namespace vorlane {

class UIApplication;
class VLPermissionService;

/// Does what the links of the library's own scheme say: "vorlane://notification-yes" and its like, as the buttons of
/// interstitials carry them. Main queue only.
class VLURLActions {
public:
    /// `initWithPermissionService:application:`
    VLURLActions(std::shared_ptr<VLPermissionService> permissionService, std::weak_ptr<UIApplication> application);

    /// `handleVorlaneActionURL:` tells whether the link was one of the library's and was followed. The scheme's case
    /// does not matter, that of the host does; path, query and fragment are ignored.
    bool handleVorlaneActionURL(const std::optional<NSURL>& url);

    // What each link does; always true.
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

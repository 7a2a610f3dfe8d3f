#include "Network/VLURLActions.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Notifications/VLPermissionService.h"
#include "Platform/Internal/ASCIICase.h"
#include "Platform/UIApplication.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

constexpr const char* kScheme = "vorlane";

/// The host of a link and its action.
struct Action {
    const char* host;
    bool (VLURLActions::*operation)();
};

constexpr Action kActions[] = {
    {"notification-yes", &VLURLActions::onNotificationYes},
    {"notification-no", &VLURLActions::onNotificationNo},
    {"location-yes", &VLURLActions::onLocationYes},
    {"location-no", &VLURLActions::onLocationNo},
    {"notification-settings-yes", &VLURLActions::onLoadSettings},
    {"location-settings-yes", &VLURLActions::onLoadSettings},
    {"notification-location-yes", &VLURLActions::onNotificationAndLocationYes},
    {"notification-location-no", &VLURLActions::onNotificationAndLocationNo},
};

}  // namespace

VLURLActions::VLURLActions(std::shared_ptr<VLPermissionService> permissionService,
                           std::weak_ptr<UIApplication> application)
    : permissionService_(std::move(permissionService)), application_(std::move(application)) {}

bool VLURLActions::handleVorlaneActionURL(const std::optional<NSURL>& url) {
    if (!url) {
        logMessage(VLLogLevel::Info, "Vorlane ignored a nil URL");
        return false;
    }
    if (!isEqualIgnoringCase(url->scheme(), kScheme)) {
        logMessage(VLLogLevel::Info, fmt::format("Vorlane ignored URL {} because it does not use the vorlane:// scheme",
                                                 url->absoluteString()));
        return false;
    }
    const auto host = url->host() ? stringByRemovingPercentEncoding(*url->host()) : std::nullopt;
    const auto* const action =
        std::ranges::find_if(kActions, [&host](const Action& known) { return host == known.host; });
    return action != std::end(kActions) && (this->*action->operation)();
}

bool VLURLActions::onNotificationYes() {
    permissionService_->queueSystemPromptForPermission(VLPermissions::Notifications);
    return true;
}

bool VLURLActions::onNotificationNo() { return true; }

bool VLURLActions::onLocationYes() {
    permissionService_->queueSystemPromptForPermission(VLPermissions::LocationAlways);
    return true;
}

bool VLURLActions::onLocationNo() { return true; }

bool VLURLActions::onLoadSettings() {
    const auto application = application_.lock();
    const auto page = NSURL::URLWithString(UIApplicationOpenSettingsURLString);
    if (application && page) application->openURL(*page);
    return true;
}

bool VLURLActions::onNotificationAndLocationYes() {
    permissionService_->queueSystemPromptForPermission(VLPermissions::Notifications);
    permissionService_->queueSystemPromptForPermission(VLPermissions::LocationAlways);
    return true;
}

bool VLURLActions::onNotificationAndLocationNo() { return true; }

}  // namespace vorlane

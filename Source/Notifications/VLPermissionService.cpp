#include "Notifications/VLPermissionService.h"

#include <fmt/format.h>

#include <charconv>
#include <limits>
#include <string_view>
#include <system_error>
#include <utility>

#include "Categories/NSDate+VLTimestamp.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Core/Base/VLMainQueueRelease.h"
#include "Core/Base/VLSettings.h"
#include "Notifications/VLAuthorisation.h"
#include "Notifications/VLInterstitialService.h"
#include "Notifications/VLRemoteNotificationService.h"
#include "Notifications/VLUserNotificationCentre.h"
#include "Platform/CLLocationManager.h"
#include "Platform/DispatchSemaphore.h"
#include "Platform/Platform.h"
#include "Public/VLConstants.h"
#include "Public/VLLog.h"
#include "Tracking/VLConfigService.h"

namespace vorlane {

namespace {

constexpr const char* kQueueLabel = "VLPermissionService";
constexpr std::int64_t kOneDay = 86400;

constexpr const char* kNotificationPrompt = "Notification Prompt";
constexpr const char* kNotificationSettings = "Notification Settings";
constexpr const char* kNotificationProvisionalUpgrade = "Notification Provisional Upgrade";
constexpr const char* kLocationPrompt = "Location Prompt";
constexpr const char* kLocationSettings = "Location Settings";

// Badge, sound, alert and car play; and a link to the settings screen of the application.
constexpr std::uint64_t kEverythingVisible = 15, kProvidesSettings = 32;

constexpr const char* kTooRecentText =
    "Soft opt-in will not be displayed because one was displayed too recently."
    "\n                  Placement: {}"
    "\n                  Permission: {}"
    "\n                  reprompt_interval: {}"
    "\n                  Last Soft Opt-in displayed {:f} seconds ago.";
constexpr const char* kRetrievingText =
    "Retrieving soft opt-in interstitial with placement {}."
    "\n               Next soft opt-in may be displayed in {} seconds."
    "\n               Configure with reprompt_interval in remote VL permissions config.";

/// The decimal number that the string holds, truncated and clamped to the range of 64 bits.
std::optional<std::int64_t> decimalInteger(std::string_view text) {
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    const auto digits = text.substr(0, text.find('.'));
    const auto fraction = text.substr(digits.size());
    constexpr std::string_view kDigits = "0123456789";
    if (digits.empty() || digits.find_first_not_of(kDigits) != std::string_view::npos) return std::nullopt;
    if (fraction.find_first_not_of(kDigits, 1) != std::string_view::npos) return std::nullopt;
    std::int64_t value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (result.ec != std::errc()) value = std::numeric_limits<std::int64_t>::max();
    return isNegative ? -value : value;
}

/// The value may be a number or a string that holds one.
std::optional<std::int64_t> repromptInterval(const Dictionary& config) {
    if (const auto text = stringForKey(config, "reprompt_interval")) return decimalInteger(*text);
    return integerForKey(config, "reprompt_interval");
}

bool isProvisionalWanted(const Dictionary& config) {
    const auto* notification = dictionaryForKey(config, "notification");
    const auto* wanted = notification ? valueForKey(*notification, "provisional_authorisation") : nullptr;
    if (!wanted) return false;
    return wanted->is_number() ? wanted->get<double>() == 1.0 : *wanted == Value(true);
}

/// The placement of the soft opt-in for an authorisation status; null for none.
const char* notificationPlacement(std::int64_t status) {
    switch (status) {
        case VLAuthorisation::Prompted:
        case VLAuthorisation::Denied:
            return kNotificationSettings;
        case VLAuthorisation::NotDetermined:
            return kNotificationPrompt;
        case VLAuthorisation::Provisional:
            return kNotificationProvisionalUpgrade;
        default:
            return nullptr;
    }
}

const char* locationPlacement(const std::shared_ptr<CLLocationManager>& manager, bool isWhenInUseTooLittle) {
    if (!manager) return nullptr;
    switch (manager->authorizationStatus()) {
        case CLAuthorizationStatus::NotDetermined:
            return kLocationPrompt;
        case CLAuthorizationStatus::Denied:
            return kLocationSettings;
        case CLAuthorizationStatus::AuthorizedWhenInUse:
            return isWhenInUseTooLittle ? kLocationSettings : nullptr;
        default:
            return nullptr;
    }
}

}  // namespace

VLPermissionService::VLPermissionService(std::shared_ptr<VLUserNotificationCentre> vlUserNotificationCentre,
                                         std::shared_ptr<CLLocationManager> locationManager,
                                         std::shared_ptr<VLSettings> settings,
                                         std::shared_ptr<VLInterstitialService> interstitialService,
                                         std::shared_ptr<VLRemoteNotificationService> remoteNotificationService)
    : vlUserNotificationCentre_(std::move(vlUserNotificationCentre)),
      locationManager_(std::move(locationManager)),
      settings_(std::move(settings)),
      interstitialService_(std::move(interstitialService)),
      remoteNotificationService_(std::move(remoteNotificationService)),
      queue_(Platform::current().makeSerialQueue(kQueueLabel)),
      requestTimeLimitSeconds_(kOneDay) {
    queue_.setSuspended(true);
}

VLPermissionService::~VLPermissionService() = default;

void VLPermissionService::startWithConfig(const VLConfigService& config, bool providesAppNotificationSettings) {
    logMessage(VLLogLevel::Debug, "Starting permission service");
    providesAppNotificationSettings_ = providesAppNotificationSettings;
    const auto permissionConfig = config.serviceConfig(VLCONFIGSERVICEPERMISSION).value_or(Dictionary());
    if (const auto interval = repromptInterval(permissionConfig)) requestTimeLimitSeconds_ = *interval;
    if (!isProvisionalWanted(permissionConfig) || !vlUserNotificationCentre_->isProvisionalAuthorisationSupported()) {
        return queue_.setSuspended(false);
    }
    requestNotificationAuthorisationWithProvisionalAuth(true, [weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock()) self->queue_.setSuspended(false);
    });
}

void VLPermissionService::queueSoftOptInForPermission(VLPermissions permission,
                                                      const std::shared_ptr<NSObject>& viewController) {
    queue_.addOperationWithBlock(
        [weakSelf = weak_from_this(), permission, viewController = releasedOnMainQueue(viewController)] {
            if (const auto self = weakSelf.lock()) self->displaySoftOptIn(permission, viewController);
        });
}

void VLPermissionService::queueSystemPromptForPermission(VLPermissions permission) {
    queue_.addOperationWithBlock([weakSelf = weak_from_this(), permission] {
        if (const auto self = weakSelf.lock()) self->showSystemPrompt(permission);
    });
}

void VLPermissionService::displaySoftOptIn(VLPermissions permission, const std::shared_ptr<NSObject>& viewController) {
    switch (permission) {
        case VLPermissions::Notifications:
            return displayNotificationSoftOptInUsingViewController(viewController);
        case VLPermissions::LocationAlways:
            return displayLocationSoftOptInUsingViewController(viewController);
        case VLPermissions::LocationWhenInUse:
            return displayLocationInUseSoftOptInUsingViewController(viewController);
    }
}

void VLPermissionService::showSystemPrompt(VLPermissions permission) {
    switch (permission) {
        case VLPermissions::Notifications:
            return requestNotificationAuthorisationWithProvisionalAuth(false, nullptr);
        case VLPermissions::LocationAlways:
            if (locationManager_) locationManager_->requestAlwaysAuthorization();
            return;
        case VLPermissions::LocationWhenInUse:
            if (locationManager_) locationManager_->requestWhenInUseAuthorization();
            return;
    }
}

void VLPermissionService::displayNotificationSoftOptInUsingViewController(
    const std::shared_ptr<NSObject>& viewController) {
    const auto settings = currentNotificationSettings();
    const char* const placement = settings ? notificationPlacement(settings->authorisationStatus) : nullptr;
    if (placement) displayInterstitialPlacement(placement, VLPermissions::Notifications, viewController);
}

/// Blocks until the main queue has answered. Returns `nullopt` if the platform is shut down first.
std::optional<VLUserNotificationSettings> VLPermissionService::currentNotificationSettings() const {
    const auto semaphore = Platform::current().makeSemaphore();
    const auto answer = std::make_shared<VLUserNotificationSettings>();
    vlUserNotificationCentre_->getNotificationSettingsWithCompletionHandler(
        [semaphore, answer](const VLUserNotificationSettings& settings) {
            *answer = settings;
            semaphore->signal();
        });
    if (!semaphore->wait()) return std::nullopt;
    return *answer;
}

void VLPermissionService::displayLocationSoftOptInUsingViewController(const std::shared_ptr<NSObject>& viewController) {
    const char* const placement = locationPlacement(locationManager_, true);
    if (placement) displayInterstitialPlacement(placement, VLPermissions::LocationAlways, viewController);
}

void VLPermissionService::displayLocationInUseSoftOptInUsingViewController(
    const std::shared_ptr<NSObject>& viewController) {
    const char* const placement = locationPlacement(locationManager_, false);
    if (placement) displayInterstitialPlacement(placement, VLPermissions::LocationWhenInUse, viewController);
}

void VLPermissionService::displayInterstitialPlacement(const std::string& placement, VLPermissions permission,
                                                       const std::shared_ptr<NSObject>& viewController) {
    const double now = vl_now();
    const double elapsed = now - settings_->lastPermissionInterstitial();
    const std::int64_t limit = requestTimeLimitSeconds_;
    if (elapsed < static_cast<double>(limit)) {
        logMessage(VLLogLevel::Warn, fmt::format(fmt::runtime(kTooRecentText), placement,
                                                 static_cast<std::uint64_t>(permission), limit, elapsed));
        return;
    }
    logMessage(VLLogLevel::Debug, fmt::format(fmt::runtime(kRetrievingText), placement, limit));
    // Intended: a soft opt-in that then fails to appear still counts.
    settings_->setLastPermissionInterstitial(now);
    interstitialService_->presentInterstitialWithPlacementString(
        placement, viewController, true,
        [weakSelf = weak_from_this(), permission](bool /*presented*/, const std::optional<NSError>& error) {
            if (const auto self = weakSelf.lock()) self->softOptInEnded(permission, error);
        });
}

/// A soft opt-in that is on screen continues by its links.
void VLPermissionService::softOptInEnded(VLPermissions permission, const std::optional<NSError>& error) {
    if (error) queueSystemPromptForPermission(permission);
}

void VLPermissionService::requestNotificationAuthorisationWithProvisionalAuth(bool isProvisional,
                                                                              std::function<void()> completionHandler) {
    std::uint64_t options = kEverythingVisible;
    if (providesAppNotificationSettings_) options |= kProvidesSettings;
    if (isProvisional) options |= VLAuthorisation::kProvisionalOption;
    vlUserNotificationCentre_->requestNotificationAuthorisation(
        options, [weakSelf = weak_from_this(), isProvisional, handler = std::move(completionHandler)](
                     std::int64_t status, const std::optional<NSError>& error) {
            if (const auto self = weakSelf.lock())
                self->notificationAuthorisationAnswered(status, error, isProvisional);
            if (handler) handler();
        });
}

void VLPermissionService::notificationAuthorisationAnswered(std::int64_t status, const std::optional<NSError>& error,
                                                            bool isProvisional) {
    switch (status) {
        case VLAuthorisation::Denied:
        case VLAuthorisation::Authorised:
        case VLAuthorisation::Provisional:
            logMessage(VLLogLevel::Debug,
                       fmt::format("Register device triggered by "
                                   "VLPermissionService.requestNotificationAuthorisationWithProvisionalAuth({:d})",
                                   isProvisional));
            return remoteNotificationService_->registerDeviceTokenIfNotificationSettingsChangedWithCompletionHandler(
                nullptr);
        case VLAuthorisation::NotDetermined:
            if (error) {
                return logMessage(
                    VLLogLevel::Error,
                    fmt::format("Error occurred when requesting notification authorisation: {}", error->description()));
            }
            return logMessage(VLLogLevel::Warn,
                              "Notification authorisation request returned a Not Determined status, but no error "
                              "occurred.");
        case VLAuthorisation::Prompted:
            logMessage(VLLogLevel::Info, "User has seen the notification authorisation system prompt");
            // Differs from any settings read later, and shows that the user was asked.
            return settings_->setNotificationSettings(
                VLUserNotificationSettings::settingsWithAuthorisation(-1, -1, -1, -1, -1, -1, -1, -1, -1));
        default:
            return;
    }
}

}  // namespace vorlane

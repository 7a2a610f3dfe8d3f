#include "Core/Startup/VLLifeCycleManager.h"

#include <fmt/format.h>

#include <utility>

#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSString+VLLength.h"
#include "Core/Base/VLSettings.h"
#include "Geo/VLLocationService.h"
#include "Notifications/VLPermissionService.h"
#include "Platform/NSBundle.h"
#include "Platform/NSException.h"
#include "Platform/NSFileManager.h"
#include "Platform/Platform.h"
#include "Platform/UIApplication.h"
#include "Platform/UILocalNotification.h"
#include "Public/VLConstants.h"
#include "Public/VLLog.h"
#include "Public/Vorlane.h"
#include "Tracking/VLConfigService.h"
#include "Tracking/VLSessionService.h"

namespace vorlane {

namespace {

constexpr std::size_t kAppKeyLength = 32;
constexpr const char* kAppKeyInfoKey = "VL_App_Key";
constexpr const char* kInvalidAppKeyText =
    "The Vorlane Project Key is missing or invalid - found key \"{}\"."
    "                                  Check that the 32 character Project Key is present in the Info.plist with key"
    "                                 \"{}\", or was set in the VLSDKOptions object at SDK initialisation.";
constexpr const char* kNoConfigText =
    "SDK cannot launch permission service or location service: the"
    "                        SDK config could not be retrieved from Vorlane and there is no"
    "                        cached config to fall back on. Check device connectivity.";
constexpr TimeInterval kBackgroundFetchInterval = 86400.0;

// No write takes this long: an older temporary file was left by a process that was killed.
constexpr TimeInterval kLongestWrite = 3600.0;

void removeAbandonedFiles() {
    const auto& platform = Platform::current();
    NSFileManager::removeAbandonedTemporaryFilesInFolder(platform.documentsFolder(),
                                                         platform.clock().now() - kLongestWrite);
}

/// Logs the notification that launched the application and returns its value under "p". Returns null without a
/// notification or without that value.
const Value* launchPhash(const Value* remote, const Value* local, Dictionary& localUserInfo) {
    if (remote) {
        logMessage(VLLogLevel::Info, fmt::format("App launched via remote notification: {}", vl_description(*remote)));
        const auto* payload = remote->get_ptr<const Dictionary*>();
        return payload ? valueForKey(*payload, VL_NOTIFICATION_KEY_PHASH) : nullptr;
    }
    if (!local) return nullptr;
    const auto* fields = local->get_ptr<const Dictionary*>();
    const auto notification = UILocalNotification::fromDictionary(fields ? *fields : Dictionary());
    logMessage(VLLogLevel::Info, fmt::format("App launched via local notification: {}", notification.description()));
    localUserInfo = notification.userInfo.value_or(Dictionary());
    return valueForKey(localUserInfo, VL_NOTIFICATION_KEY_PHASH);
}

}  // namespace

VLLifeCycleManager::VLLifeCycleManager(std::weak_ptr<VLSettings> settings,
                                       std::weak_ptr<VLSessionService> sessionService,
                                       std::weak_ptr<VLLocationService> locationService,
                                       std::weak_ptr<VLPermissionService> permissionService,
                                       std::weak_ptr<VLConfigService> configService,
                                       std::shared_ptr<NSNotificationCenter> notificationCenter,
                                       std::shared_ptr<NSBundle> mainBundle)
    : settings_(std::move(settings)),
      sessionService_(std::move(sessionService)),
      locationService_(std::move(locationService)),
      permissionService_(std::move(permissionService)),
      configService_(std::move(configService)),
      notificationCenter_(std::move(notificationCenter)),
      mainBundle_(std::move(mainBundle)) {}

VLLifeCycleManager::~VLLifeCycleManager() { removeObservers(); }

void VLLifeCycleManager::initialiseSDKWithApplication(const std::shared_ptr<UIApplication>& application,
                                                      const std::optional<Dictionary>& launchOptions,
                                                      const VLSDKOptions& options) {
    assertMainQueue();
    options_ = options;
    const auto appKey = checkedAppKey();
    application_ = application;
    removeAbandonedFiles();
    if (const auto settings = settings_.lock()) settings->setAppKey(appKey);
    logMessage(VLLogLevel::Info, fmt::format("Vorlane SDK initialised with app key: {}", appKey));
    logMessage(VLLogLevel::Info, fmt::format("launchOptions: {}", vl_description(launchOptions)));
    appOpenInterstitial_ = options.appOpenInterstitial();
    observeApplicationStates();
    storePhashOfLaunchNotification(launchOptions);
    registerWithPlatform();
    loadConfig();
    const auto sessionService = sessionService_.lock();
    const bool isActive = application && application->applicationState() == UIApplicationState::Active;
    if (sessionService && isActive) sessionService->startSessionIfNotActive();
}

std::string VLLifeCycleManager::checkedAppKey() const {
    std::optional<Value> found;
    if (options_.appKey()) {
        found = *options_.appKey();
    } else {
        found = mainBundle_->objectForInfoDictionaryKey(kAppKeyInfoKey);
    }
    const auto* key = found ? found->get_ptr<const std::string*>() : nullptr;
    if (key && vl_length(*key) == kAppKeyLength) return *key;
    const auto reason = fmt::format(fmt::runtime(kInvalidAppKeyText), vl_description(found), kAppKeyInfoKey);
    logMessage(VLLogLevel::Error, reason);
    throw NSException("Missing / Invalid Project Key", reason);
}

void VLLifeCycleManager::observeApplicationStates() {
    removeObservers();
    observe(UIApplicationDidBecomeActiveNotification, &VLLifeCycleManager::applicationDidBecomeActive);
    observe(UIApplicationDidEnterBackgroundNotification, &VLLifeCycleManager::applicationDidEnterBackground);
    observe(UIApplicationWillTerminateNotification, &VLLifeCycleManager::applicationWillTerminate);
    observe(UIApplicationWillEnterForegroundNotification, &VLLifeCycleManager::applicationWillEnterForeground);
}

void VLLifeCycleManager::observe(const char* notificationName, void (VLLifeCycleManager::*operation)()) {
    observers_.push_back(notificationCenter_->addObserver(
        notificationName, [weakSelf = weak_from_this(), operation](const NSNotification&) {
            if (const auto self = weakSelf.lock()) ((*self).*operation)();
        }));
}

void VLLifeCycleManager::removeObservers() {
    for (const auto token : observers_) notificationCenter_->removeObserver(token);
    observers_.clear();
}

void VLLifeCycleManager::storePhashOfLaunchNotification(const std::optional<Dictionary>& launchOptions) {
    const auto settings = settings_.lock();
    if (!settings) return;
    settings->setPhash(std::nullopt);
    if (!launchOptions) return;
    Dictionary localUserInfo;
    const Value* phash =
        launchPhash(valueForKey(*launchOptions, UIApplicationLaunchOptionsRemoteNotificationKey),
                    valueForKey(*launchOptions, UIApplicationLaunchOptionsLocalNotificationKey), localUserInfo);
    if (!phash || !phash->is_string()) return;
    const auto& text = phash->get_ref<const std::string&>();
    logMessage(VLLogLevel::Info,
               fmt::format("App was launched via an Vorlane notification. Storing notification phash: {}", text));
    settings->setPhash(text);
}

void VLLifeCycleManager::registerWithPlatform() {
    onMainQueue([weakApplication = application_] {
        const auto application = weakApplication.lock();
        if (!application) return;
        application->registerForRemoteNotifications();
        application->setMinimumBackgroundFetchInterval(kBackgroundFetchInterval);
    });
}

void VLLifeCycleManager::loadConfig() {
    const auto configService = configService_.lock();
    if (!configService) return;
    configService->loadConfigWithCompletion(
        [weakConfig = configService_, weakPermissions = permissionService_, weakLocation = locationService_,
         providesSettings = options_.providesAppNotificationSettings()](VLConfigService::LoadStatus status) {
            if (status == VLConfigService::LoadStatus::Unavailable) {
                return logMessage(VLLogLevel::Error, kNoConfigText);
            }
            const auto config = weakConfig.lock();
            const auto permissionService = weakPermissions.lock();
            if (config && permissionService) permissionService->startWithConfig(*config, providesSettings);
            // The location manager calls back on the main queue, too.
            onMainQueue([weakLocation] {
                if (const auto locationService = weakLocation.lock()) locationService->startWithConfig();
            });
        });
}

void VLLifeCycleManager::applicationDidBecomeActive() {
    assertMainQueue();
    logMessage(VLLogLevel::Debug, "App Entering Foreground.");
    // A system alert makes the application inactive without a background in between. That starts no new session.
    if (isAppInForeground_) return;
    isAppInForeground_ = true;
    presentAppOpenInterstitial();
    Vorlane::sharedInstance().setNotificationOpen(false);
    if (const auto sessionService = sessionService_.lock()) sessionService->sessionStart();
}

/// Shows nothing if a notification opened the application: the interstitial would cover the notification's content.
void VLLifeCycleManager::presentAppOpenInterstitial() const {
    if (!appOpenInterstitial_ || Vorlane::sharedInstance().isNotificationOpen()) return;
    Vorlane::presentInterstitialWithPlacement(VLInterstitialPlacement::AppOpen, appOpenInterstitial_, true, nullptr);
}

void VLLifeCycleManager::applicationDidEnterBackground() {
    assertMainQueue();
    logMessage(VLLogLevel::Debug, "App Entering Background.");
    isAppInForeground_ = false;
    endSession();
    if (const auto settings = settings_.lock()) settings->setForceGeoConfigUpdate(false);
}

void VLLifeCycleManager::applicationWillTerminate() {
    assertMainQueue();
    logMessage(VLLogLevel::Debug, "App Terminated.");
    isAppInForeground_ = false;
    const auto application = application_.lock();
    // In the background the session has ended already.
    if (!application || application->applicationState() != UIApplicationState::Background) endSession();
    if (const auto settings = settings_.lock()) settings->setForceGeoConfigUpdate(false);
}

void VLLifeCycleManager::applicationWillEnterForeground() {
    assertMainQueue();
    if (const auto locationService = locationService_.lock()) {
        locationService->configUpdateWithBeacons(true, false, nullptr);
    }
}

void VLLifeCycleManager::endSession() {
    if (const auto sessionService = sessionService_.lock()) sessionService->sessionEnd();
}

}  // namespace vorlane

#include "Notifications/VLLocalNotificationService.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Categories/NSDate+VLTimestamp.h"
#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/UILocalNotification+VLTimeToFire.h"
#include "Core/Base/VLSettings.h"
#include "Network/VLPayloadBuilder.h"
#include "Network/VLPayloadOptions.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Notifications/VLNotificationHelper.h"
#include "Platform/Clock.h"
#include "Platform/DispatchGroup.h"
#include "Platform/NSTimer.h"
#include "Platform/Platform.h"
#include "Public/VLConstants.h"
#include "Public/VLLog.h"
#include "Public/Vorlane.h"

namespace vorlane {

namespace {

constexpr const char* kOwnKey = "vl_notification";
constexpr const char* kCampaignKey = "vl_campaign";
constexpr const char* kRecordKey = "vl_data";
constexpr const char* kDefaultAction = "View";

/// A notification that is due sooner gets its phash immediately.
constexpr TimeInterval kSoon = 90;
/// How long before its fire date a notification gets its phash.
constexpr TimeInterval kPhashLead = 60;
constexpr TimeInterval kFirstPass = 5;
constexpr TimeInterval kSoonestNextPass = 10;
constexpr double kWhenever = std::numeric_limits<float>::max();

constexpr std::int64_t kFilteredOut = 204;

const Value* userInfoValue(const UILocalNotification& notification, const char* key) {
    return notification.userInfo ? valueForKey(*notification.userInfo, key) : nullptr;
}

bool isOutstanding(const UILocalNotification& notification) {
    return userInfoValue(notification, kOwnKey) && !userInfoValue(notification, VL_NOTIFICATION_KEY_PHASH);
}

void copyIfPresent(Dictionary& to, const char* key, const Dictionary& from, const char* fromKey) {
    if (const auto* value = valueForKey(from, fromKey)) to[key] = *value;
}

/// The record that is sent to the server if the notification is cancelled.
Dictionary cancellationRecord(const Dictionary& userInfo, const Dictionary& response,
                              const std::optional<std::string>& phash) {
    Dictionary record;
    copyIfPresent(record, "campaignid", response, "campaignid");
    copyIfPresent(record, "absplitid", response, "splitid");
    copyIfPresent(record, "templateid", response, "templateid");
    copyIfPresent(record, "campaigntoken", userInfo, kCampaignKey);
    if (phash) record["phash"] = *phash;
    return record;
}

/// The percent-decoded text of the answer; the encoded text if it cannot be decoded.
std::optional<std::string> messageText(const Dictionary& response) {
    auto text = stringForKey(response, "messagetext");
    if (!text) return std::nullopt;
    auto decoded = stringByRemovingPercentEncoding(*text);
    return decoded ? std::move(decoded) : std::move(text);
}

}  // namespace

std::shared_ptr<VLLocalNotificationService> VLLocalNotificationService::serviceWith(Collaborators collaborators) {
    const std::shared_ptr<VLLocalNotificationService> service(new VLLocalNotificationService(std::move(collaborators)));
    service->observeApplication();
    return service;
}

VLLocalNotificationService::VLLocalNotificationService(Collaborators collaborators)
    : collaborators_(std::move(collaborators)) {}

VLLocalNotificationService::~VLLocalNotificationService() {
    for (const auto token : observers_) collaborators_.notificationCenter->removeObserver(token);
}

void VLLocalNotificationService::observeApplication() {
    observe(UIApplicationWillTerminateNotification, &VLLocalNotificationService::applicationWillTerminate);
    observe(UIApplicationWillResignActiveNotification, &VLLocalNotificationService::applicationWillMoveToBackground);
}

void VLLocalNotificationService::observe(const char* notificationName,
                                         void (VLLocalNotificationService::*operation)()) {
    observers_.push_back(collaborators_.notificationCenter->addObserver(
        notificationName, [weakSelf = weak_from_this(), operation](const NSNotification&) {
            if (const auto self = weakSelf.lock()) ((*self).*operation)();
        }));
}

void VLLocalNotificationService::applicationWillMoveToBackground() {
    logMessage(VLLogLevel::Debug, "Local notification: app moving to background, create all outstanding phashes");
    createAllPhashes();
}

void VLLocalNotificationService::applicationWillTerminate() {
    logMessage(VLLogLevel::Debug, "Local notification: app terminating, create all outstanding phashes");
    createAllPhashes();
}

void VLLocalNotificationService::createAllPhashes() {
    invalidateTimer();
    createPhashForOutstandingNotificationDueIn(kWhenever);
}

std::optional<UILocalNotification> VLLocalNotificationService::scheduleLocalNotification(
    const std::string& text, std::int64_t badge, const std::optional<std::string>& campaign, std::optional<double> date,
    const std::optional<Dictionary>& metadata, const std::optional<std::string>& action) {
    const auto allowed = collaborators_.settings->notificationSettings();
    if (!allowed || !allowed->willNotificationsBeVisible()) return std::nullopt;
    const auto notification = notificationWith(text, badge, campaign, date, metadata, action);
    const double due = timeToFire(notification);
    if (due < kSoon || collaborators_.application->applicationState() == UIApplicationState::Background) {
        logMessage(VLLogLevel::Debug, fmt::format("Local notification: due in {:.0f} seconds, get the phash now", due));
        createPhashNow(notification);
    } else {
        logMessage(VLLogLevel::Debug,
                   fmt::format("Local notification: due in {:.0f} seconds, schedule but create phash later", due));
        collaborators_.application->scheduleLocalNotification(notification);
        // An earlier timer that is pending stays armed, which is harmless.
        scheduleTimer(kFirstPass);
    }
    return notification;
}

UILocalNotification VLLocalNotificationService::notificationWith(const std::string& text, std::int64_t badge,
                                                                 const std::optional<std::string>& campaign,
                                                                 std::optional<double> date,
                                                                 const std::optional<Dictionary>& metadata,
                                                                 const std::optional<std::string>& action) const {
    UILocalNotification notification;
    notification.fireDate = date;
    notification.timeZone = collaborators_.notificationHelper->defaultTimeZone();
    notification.alertBody = text;
    notification.alertAction = action && !action->empty() ? *action : kDefaultAction;
    notification.soundName = UILocalNotificationDefaultSoundName;
    notification.applicationIconBadgeNumber = badge;
    auto userInfo = metadata.value_or(Dictionary());
    userInfo[kOwnKey] = true;
    if (campaign) userInfo[kCampaignKey] = *campaign;
    notification.userInfo = std::move(userInfo);
    return notification;
}

/// The answer to the split schedules or drops the notification.
void VLLocalNotificationService::createPhashNow(const UILocalNotification& notification) {
    const auto task = collaborators_.application->beginBackgroundTaskWithExpirationHandler([] {});
    const auto group = std::make_shared<DispatchGroup>();
    createSplitForNotification(notification, group);
    group->notify(Platform::current().mainQueue(),
                  [application = collaborators_.application, task] { application->endBackgroundTask(task); });
}

void VLLocalNotificationService::createSplitForNotification(const UILocalNotification& notification,
                                                            const std::shared_ptr<DispatchGroup>& group) {
    if (group) group->enter();
    collaborators_.urlSession->POSTWithJSONResponse(
        collaborators_.urlBuilder->MDNURL(), splitBody(notification), false,
        [self = shared_from_this(), notification, group](const std::optional<Dictionary>& response, std::int64_t status,
                                                         const std::optional<NSError>& error) {
            onMainQueue([self, notification, group, response, status, error] {
                self->splitArrived(notification, response, status, error);
                if (group) group->leave();
            });
        });
}

Dictionary VLLocalNotificationService::splitBody(const UILocalNotification& notification) const {
    Dictionary body{{"responsetype", "json"},
                    {"trackingid", collaborators_.settings->trackingId()},
                    {"phash", collaborators_.settings->phash().value_or("")}};
    if (const auto* campaign = userInfoValue(notification, kCampaignKey)) body["campaigntoken"] = *campaign;
    if (notification.alertBody) {
        body["pushtext"] = stringByAddingPercentEncoding(*notification.alertBody, vl_URIComponentAllowedCharacterSet());
    }
    return body;
}

void VLLocalNotificationService::splitArrived(const UILocalNotification& notification,
                                              const std::optional<Dictionary>& response, std::int64_t status,
                                              const std::optional<NSError>& error) {
    // In one step: a process that is killed between the two must not lose the notification.
    collaborators_.application->changeLocalNotificationsInOneStep([&] {
        // Harmless if it was never scheduled.
        collaborators_.application->cancelLocalNotification(notification);
        reschedule(notification, response, status, error);
    });
}

void VLLocalNotificationService::reschedule(const UILocalNotification& notification,
                                            const std::optional<Dictionary>& response, std::int64_t status,
                                            const std::optional<NSError>& error) {
    if (status == kFilteredOut) {
        logMessage(VLLogLevel::Debug,
                   "Local notification: will not be scheduled. This tracking ID has been filtered out.");
    } else if (error || !response) {
        logMessage(VLLogLevel::Debug, fmt::format("Local notification: schedule as is. Error retrieving split: {}",
                                                  error ? error->description() : "(null)"));
        collaborators_.application->scheduleLocalNotification(notification);
    } else {
        collaborators_.application->scheduleLocalNotification(splitCopy(notification, *response));
    }
}

/// The notification with the content of the answer. Without a phash in the answer it stays outstanding.
UILocalNotification VLLocalNotificationService::splitCopy(UILocalNotification copy, const Dictionary& response) const {
    auto userInfo = copy.userInfo.value_or(Dictionary());
    const auto phash = stringForKey(response, "phash");
    const auto record = cancellationRecord(userInfo, response, phash);
    const auto text = messageText(response);
    logMessage(VLLogLevel::Debug,
               fmt::format("Local notification: retrieved split with message \"{}\"", vl_description(text)));
    if (text) copy.alertBody = text;
    if (phash) userInfo[VL_NOTIFICATION_KEY_PHASH] = *phash;
    userInfo[kRecordKey] = record;
    copy.userInfo = std::move(userInfo);
    copy.soundName = collaborators_.notificationHelper->getNotificationSoundFromMessageData(response);
    return copy;
}

std::vector<UILocalNotification> VLLocalNotificationService::outstandingNotifications() const {
    auto notifications = collaborators_.application->scheduledLocalNotifications();
    std::erase_if(notifications, [](const auto& notification) { return !isOutstanding(notification); });
    std::ranges::stable_sort(notifications, {}, [now = vl_now()](const auto& notification) {
        const double due = notification.fireDate.value_or(now);
        return due == due ? due : std::numeric_limits<double>::infinity();
    });
    return notifications;
}

void VLLocalNotificationService::createPhashForOutstandingNotificationDueIn(double seconds) {
    // Intended: one identifier for all passes. A second pass that starts before the first has ended replaces it.
    backgroundLocalUpdateTask_ = beginPhashPassTask();
    const auto group = std::make_shared<DispatchGroup>();
    for (const auto& notification : outstandingNotifications()) {
        if (timeToFire(notification) <= seconds) createSplitForNotification(notification, group);
    }
    group->notify(Platform::current().mainQueue(), [self = shared_from_this()] {
        self->updateOutstandingNotificationTimer(self->backgroundLocalUpdateTask_);
    });
}

/// The expiration handler ends this task, whichever task is stored by then.
UIBackgroundTaskIdentifier VLLocalNotificationService::beginPhashPassTask() {
    const auto own = std::make_shared<UIBackgroundTaskIdentifier>(UIBackgroundTaskInvalid);
    *own = collaborators_.application->beginBackgroundTaskWithExpirationHandler(
        [application = std::weak_ptr(collaborators_.application), own] {
            if (const auto open = application.lock()) open->endBackgroundTask(*own);
        });
    return *own;
}

void VLLocalNotificationService::updateOutstandingNotificationTimer(UIBackgroundTaskIdentifier task) {
    const auto outstanding = outstandingNotifications();
    logMessage(VLLogLevel::Debug,
               fmt::format("Local notification: {} outstanding without a phash", outstanding.size()));
    if (!outstanding.empty()) {
        const double due = timeToFire(outstanding.front());
        logMessage(VLLogLevel::Debug,
                   fmt::format("Local notification: due to fire in {:.0f} seconds, create phash in {:.0f} seconds", due,
                               due - kPhashLead));
        invalidateTimer();
        // The order of the arguments matters: a fire date that is no number counts as the minimum.
        scheduleTimer(std::max(kSoonestNextPass, due - kPhashLead));
    }
    collaborators_.application->endBackgroundTask(task);
}

void VLLocalNotificationService::scheduleTimer(TimeInterval seconds) {
    notificationTimer_ = Platform::current().scheduledTimer(seconds, [weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock()) self->timerFired();
    });
}

void VLLocalNotificationService::timerFired() {
    logMessage(VLLogLevel::Debug, "Local notification: timer fired");
    createPhashForOutstandingNotificationDueIn(kPhashLead);
}

void VLLocalNotificationService::invalidateTimer() {
    if (notificationTimer_) notificationTimer_->invalidate();
}

void VLLocalNotificationService::didAcceptLocalNotification(const std::shared_ptr<UIApplication>& /*application*/,
                                                            const UILocalNotification& notification) {
    logMessage(VLLogLevel::Debug,
               fmt::format("Local notification: user opened notification {}", notification.description()));
    Vorlane::sharedInstance().setNotificationOpen(true);
    if (collaborators_.application->applicationState() != UIApplicationState::Inactive || !notification.userInfo)
        return;
    const auto phash = stringForKey(*notification.userInfo, VL_NOTIFICATION_KEY_PHASH);
    if (phash) collaborators_.settings->setPhash(phash);
}

Dictionary VLLocalNotificationService::buildPhashData(const std::optional<Dictionary>& userInfo) {
    const auto* record = userInfo ? dictionaryForKey(*userInfo, kRecordKey) : nullptr;
    return record ? *record : Dictionary();
}

void VLLocalNotificationService::cancelPendingLocalNotification(const UILocalNotification& notification) {
    if (userInfoValue(notification, VL_NOTIFICATION_KEY_PHASH)) {
        cancelPhashCommand({Value(buildPhashData(notification.userInfo))});
    }
    collaborators_.application->cancelLocalNotification(notification);
}

void VLLocalNotificationService::cancelAllPendingLocalNotifications() {
    const auto scheduled = collaborators_.application->scheduledLocalNotifications();
    if (scheduled.empty()) return;
    Array records;
    for (const auto& notification : scheduled) {
        if (!userInfoValue(notification, VL_NOTIFICATION_KEY_PHASH)) continue;
        records.emplace_back(buildPhashData(notification.userInfo));
    }
    if (records.empty()) {
        logMessage(VLLogLevel::Debug, "Local notification: no phashes to cancel");
    } else {
        cancelPhashCommand(records);
    }
    collaborators_.application->cancelAllLocalNotifications();
}

void VLLocalNotificationService::cancelPhashCommand(const Array& records) const {
    auto payload = collaborators_.payloadBuilder->payloadWithOptions([&records](VLPayloadOptions& options) {
        options.body = {{"cancellations", records}};
        options.includeBasicData = true;
        options.basicDataSeparator = 0;
        options.includeDeviceData = true;
        options.deviceDataKey = VLPayloadOptions::kDeviceDataKey;
    });
    collaborators_.urlSession->POST(collaborators_.urlBuilder->cancelPhashURL(), std::move(payload), false,
                                    [records](const std::optional<std::string>& /*text*/, std::int64_t /*status*/,
                                              const std::optional<NSError>& error) {
                                        if (!error) return;
                                        logMessage(VLLogLevel::Debug,
                                                   fmt::format("Failed to cancel phashes for local notification(s): {}",
                                                               vl_description(Value(records))));
                                    });
}

}  // namespace vorlane

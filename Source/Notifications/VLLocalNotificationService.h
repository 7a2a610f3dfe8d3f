#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/NSError.h"
#include "Platform/NSNotificationCenter.h"
#include "Platform/UIApplication.h"
#include "Public/VLValue.h"

namespace vorlane {

class DispatchGroup;
class NSTimer;
class VLNotificationHelper;
class VLPayloadBuilder;
class VLSettings;
class VLURLBuilder;
class VLURLSession;
class VLUserNotificationCentre;

/// Schedules local notifications for the host and obtains a phash for each of them close to its delivery. The answer to
/// this "split" request may also replace the text or filter the notification out. Called by the facade and the
/// notification centre; main queue only.
///
/// A notification that is due soon is scheduled when its split has been answered. A later one is scheduled immediately,
/// and its split is requested a minute before it fires, or when the application leaves the foreground. Until then it is
/// outstanding: its user info has "vl_notification" and no "p". The platform's list is the only record of this.
class VLLocalNotificationService : public std::enable_shared_from_this<VLLocalNotificationService> {
public:
    struct Collaborators {
        std::shared_ptr<VLSettings> settings;
        std::shared_ptr<VLNotificationHelper> notificationHelper;
        std::shared_ptr<UIApplication> application;
        std::shared_ptr<VLURLBuilder> urlBuilder;
        std::shared_ptr<VLURLSession> urlSession;
        std::shared_ptr<VLPayloadBuilder> payloadBuilder;
        std::shared_ptr<NSNotificationCenter> notificationCenter;
    };

    /// `initWithSettings:withHelper:withApplication:urlBuilder:urlSession:payloadBuilder:` makes a service that
    /// observes the application leaving the foreground.
    static std::shared_ptr<VLLocalNotificationService> serviceWith(Collaborators collaborators);
    ~VLLocalNotificationService();

    /// `scheduleLocalNotification:badge:campaign:date:metadata:action:` returns the notification, or `nullopt` without
    /// scheduling anything if notifications would not be visible. A missing date means now, a missing or empty action
    /// "View".
    std::optional<UILocalNotification> scheduleLocalNotification(const std::string& text, std::int64_t badge,
                                                                 const std::optional<std::string>& campaign,
                                                                 std::optional<double> date,
                                                                 const std::optional<Dictionary>& metadata,
                                                                 const std::optional<std::string>& action);

    /// `application:didAcceptLocalNotification:`: the user acted on the notification.
    void didAcceptLocalNotification(const std::shared_ptr<UIApplication>& application,
                                    const UILocalNotification& notification);

    /// `cancelPendingLocalNotification:` also reports the phash of the notification to the server as cancelled.
    void cancelPendingLocalNotification(const UILocalNotification& notification);
    /// `cancelAllPendingLocalNotifications` also cancels notifications that the library did not make.
    void cancelAllPendingLocalNotifications();

    /// `createPhashForOutstandingNotificationDueIn:` requests the split of every outstanding notification that is due
    /// within that time.
    void createPhashForOutstandingNotificationDueIn(double seconds);

    /// Not used by any operation, and not set by the registry.
    const std::shared_ptr<VLUserNotificationCentre>& vlUserNotificationCentre() const {
        return vlUserNotificationCentre_;
    }
    void setVlUserNotificationCentre(std::shared_ptr<VLUserNotificationCentre> centre) {
        vlUserNotificationCentre_ = std::move(centre);
    }

private:
    explicit VLLocalNotificationService(Collaborators collaborators);

    void observeApplication();
    void observe(const char* notificationName, void (VLLocalNotificationService::*operation)());
    void applicationWillMoveToBackground();
    void applicationWillTerminate();
    void createAllPhashes();

    UILocalNotification notificationWith(const std::string& text, std::int64_t badge,
                                         const std::optional<std::string>& campaign, std::optional<double> date,
                                         const std::optional<Dictionary>& metadata,
                                         const std::optional<std::string>& action) const;
    void createPhashNow(const UILocalNotification& notification);

    void createSplitForNotification(const UILocalNotification& notification,
                                    const std::shared_ptr<DispatchGroup>& group);
    Dictionary splitBody(const UILocalNotification& notification) const;
    void splitArrived(const UILocalNotification& notification, const std::optional<Dictionary>& response,
                      std::int64_t status, const std::optional<NSError>& error);
    void reschedule(const UILocalNotification& notification, const std::optional<Dictionary>& response,
                    std::int64_t status, const std::optional<NSError>& error);
    UILocalNotification splitCopy(UILocalNotification copy, const Dictionary& response) const;

    std::vector<UILocalNotification> outstandingNotifications() const;
    UIBackgroundTaskIdentifier beginPhashPassTask();
    void updateOutstandingNotificationTimer(UIBackgroundTaskIdentifier task);
    void scheduleTimer(TimeInterval seconds);
    void timerFired();
    void invalidateTimer();

    static Dictionary buildPhashData(const std::optional<Dictionary>& userInfo);
    void cancelPhashCommand(const Array& records) const;

    // Fixed at construction.
    const Collaborators collaborators_;
    std::vector<NSNotificationCenter::Token> observers_;
    // Main queue only.
    std::shared_ptr<NSTimer> notificationTimer_;
    std::shared_ptr<VLUserNotificationCentre> vlUserNotificationCentre_;
    UIBackgroundTaskIdentifier backgroundLocalUpdateTask_ = UIBackgroundTaskInvalid;
};

}  // namespace vorlane

#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

class NSBundle;
class NSURL;
class VLPayloadBuilder;
class VLRemoteNotificationService;
class VLSettings;
class VLURLBuilder;
class VLURLSession;

/// Reports the start and the end of each stretch of the application in the foreground, keeps their count and total
/// length, and tells the service of a change of the tracking id. Called by the lifecycle manager and the facade; main
/// queue only.
///
/// The result of a session request is ignored: a report that fails is lost, and changes no state.
class VLSessionService {
public:
    /// `initWithSettings:remoteNotificationService:urlSession:urlBuilder:payloadBuilder:`, with the application's
    /// bundle.
    VLSessionService(std::weak_ptr<VLSettings> settings,
                     std::weak_ptr<VLRemoteNotificationService> remoteNotificationService,
                     std::shared_ptr<VLURLSession> urlSession, std::weak_ptr<VLURLBuilder> urlBuilder,
                     std::shared_ptr<VLPayloadBuilder> payloadBuilder, std::shared_ptr<NSBundle> mainBundle);

    /// Starts a session unless one is running.
    void startSessionIfNotActive();
    /// Starts a session; while one is running, restarts its clock and sends another start.
    void sessionStart();
    /// Ends the running session; without one only logs a warning.
    void sessionEnd();

    /// `setTrackingID:` changes the user. Nothing or "" is ignored; the id in force is stored again without a request.
    /// A push token that is stored is registered again, for the new user.
    void setTrackingID(const std::optional<std::string>& trackingId);

    /// `postSessionToUrl:` sends the session's body, built now.
    void postSessionToUrl(const NSURL& url);

    bool hasActiveSession() const { return hasActiveSession_; }
    /// Seconds; 0 while a session runs.
    TimeInterval sessionLength() const { return sessionLength_; }
    /// Seconds; 0 while a session runs.
    TimeInterval averageSessionLength() const { return averageSessionLength_; }

private:
    Dictionary sessionBody(VLSettings& settings) const;
    void registerDeviceTokenAgain(const VLSettings& settings) const;
    void addSessionToTotals(VLSettings& settings, TimeInterval length);

    // Fixed at construction.
    const std::weak_ptr<VLSettings> settings_;
    const std::weak_ptr<VLRemoteNotificationService> remoteNotificationService_;
    const std::shared_ptr<VLURLSession> urlSession_;
    const std::weak_ptr<VLURLBuilder> urlBuilder_;
    const std::shared_ptr<VLPayloadBuilder> payloadBuilder_;
    const std::shared_ptr<NSBundle> mainBundle_;
    // Main queue only.
    bool hasActiveSession_ = false;
    double startDate_ = 0;
    TimeInterval sessionLength_ = 0;
    TimeInterval averageSessionLength_ = 0;
};

}  // namespace vorlane

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

/// Reports the start and the end of each session, counts the sessions and their total length, and reports a change of
/// the tracking id. A session is a time in the foreground. Called by the lifecycle manager and the facade. Main queue
/// only.
///
/// The result of a session request is ignored: a report that fails is lost and changes no state.
class VLSessionService {
public:
    /// `initWithSettings:remoteNotificationService:urlSession:urlBuilder:payloadBuilder:`, with the main bundle.
    VLSessionService(std::weak_ptr<VLSettings> settings,
                     std::weak_ptr<VLRemoteNotificationService> remoteNotificationService,
                     std::shared_ptr<VLURLSession> urlSession, std::weak_ptr<VLURLBuilder> urlBuilder,
                     std::shared_ptr<VLPayloadBuilder> payloadBuilder, std::shared_ptr<NSBundle> mainBundle);

    /// Starts a session if none is running.
    void startSessionIfNotActive();
    /// Starts a session. If one is running, it restarts its clock and sends another start.
    void sessionStart();
    /// Ends the running session. Without one it only logs a warning.
    void sessionEnd();

    /// `setTrackingID:` changes the user and registers a stored push token again, for the new user. `nullopt` and ""
    /// are ignored. The current id is stored again without a request.
    void setTrackingID(const std::optional<std::string>& trackingId);

    /// `postSessionToUrl:` sends the session's current values.
    void postSessionToUrl(const NSURL& url);

    bool hasActiveSession() const { return hasActiveSession_; }
    /// The length of the last session; 0 while one is running.
    TimeInterval sessionLength() const { return sessionLength_; }
    /// The average length of all sessions; 0 while one is running.
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

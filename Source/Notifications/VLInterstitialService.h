#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/NSError.h"
#include "Platform/NSNotificationCenter.h"
#include "Public/VLInterstitialPlacement.h"
#include "Public/VLValue.h"

namespace vorlane {

class NSObject;
class UIApplication;
class UIViewController;
class VLInterstitialViewController;
class VLPayloadBuilder;
class VLSettings;
class VLURLBuilder;
class VLURLSession;

/// Fetches the page of a named placement and shows it in a view controller that the host supplies, one at a time.
/// Called by the facade and the permission service; any thread.
///
/// Every handler may be empty. It runs once, on the main queue, after the call has returned. Nothing is retried.
class VLInterstitialService : public std::enable_shared_from_this<VLInterstitialService> {
public:
    /// Receives whether the interstitial is on screen, or an error. Neither if there is no content to show, if another
    /// interstitial is on screen, or if the application has no window.
    using Handler = std::function<void(bool presented, std::optional<NSError> error)>;

    struct Collaborators {
        std::shared_ptr<VLSettings> settings;
        std::shared_ptr<VLURLBuilder> urlBuilder;
        std::shared_ptr<VLURLSession> urlSession;
        std::shared_ptr<VLPayloadBuilder> payloadBuilder;
        std::shared_ptr<UIApplication> application;
        std::shared_ptr<NSNotificationCenter> notificationCenter;
    };

    /// `initWithSettings:urlBuilder:urlSession:payloadBuilder:` makes a service that observes dismissals.
    static std::shared_ptr<VLInterstitialService> serviceWith(Collaborators collaborators);
    ~VLInterstitialService();

    /// `stringForPlacement:` returns the name that the server knows the placement by, or `nullopt` if it has none.
    static std::optional<std::string> stringForPlacement(VLInterstitialPlacement placement);

    /// `presentInterstitialWithPlacement:viewController:animated:completionHandler:`. Errors:
    /// `VLErrorDomainInterstitial` code 0 for a placement without a name; additionally those of
    /// `presentInterstitialWithPlacementString()`.
    void presentInterstitialWithPlacement(VLInterstitialPlacement placement,
                                          const std::shared_ptr<NSObject>& viewController, bool animated,
                                          Handler completionHandler);

    /// `presentInterstitialWithPlacementString:viewController:animated:completionHandler:`. The object must be both a
    /// `UIViewController` and a `VLInterstitialViewController`. Errors: `VLErrorDomainInterstitial` code 1 for null and
    /// code 2 for an unsuitable object; those of the HTTP layer; the parse error of content that is no JSON object.
    void presentInterstitialWithPlacementString(const std::string& placement,
                                                const std::shared_ptr<NSObject>& viewController, bool animated,
                                                Handler completionHandler);

    /// `handlePlacementResponse:interstitialViewController:animated:completionHandler:` passes the content of the
    /// server's answer to the view controller and shows it. An unsuitable object is ignored. Main queue.
    void handlePlacementResponse(const Dictionary& response, const std::shared_ptr<NSObject>& viewController,
                                 bool animated, const Handler& completionHandler);

    /// `presentInterstitialViewController:animated:` presents the controller over the topmost one of the key window.
    /// Returns false if there is none, or if the host has placed the controller elsewhere. Main queue.
    bool presentInterstitialViewController(const std::shared_ptr<UIViewController>& viewController, bool animated);

    /// `interstitialWasDismissed:` makes room for the next interstitial, on the main queue.
    void interstitialWasDismissed(const NSNotification& notification);

    /// The interstitial on screen, or null. Main queue.
    std::shared_ptr<UIViewController> displayedInterstitialController() const {
        return displayedInterstitialController_.lock();
    }

private:
    explicit VLInterstitialService(Collaborators collaborators);

    void observeDismissal();
    void fetchPlacement(const std::string& placement, const std::shared_ptr<NSObject>& viewController, bool animated,
                        const Handler& completionHandler);
    Dictionary requestPayload() const;
    void show(const std::shared_ptr<UIViewController>& viewController, bool animated, const Handler& completionHandler);

    // Fixed at construction.
    const Collaborators collaborators_;
    NSNotificationCenter::Token dismissalObserver_ = 0;
    // Main queue only. Weak: a destroyed controller is not on screen.
    std::weak_ptr<UIViewController> displayedInterstitialController_;
};

}  // namespace vorlane

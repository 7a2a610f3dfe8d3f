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

/// Fetches the page of a named placement and shows it in a view controller of the host's, one at a time. Called by the
/// facade and the permission service; any thread.
///
/// Every handler may be empty. It runs once, on the main queue, after the call that took it has returned. Nothing is
/// tried again.
class VLInterstitialService : public std::enable_shared_from_this<VLInterstitialService> {
public:
    /// Whether the interstitial is on screen, and what went wrong. Neither when there was nothing to show, when another
    /// one is on screen, or when the application has no window to show it in.
    using Handler = std::function<void(bool presented, std::optional<NSError> error)>;

    /// What the service works with.
    struct Collaborators {
        std::shared_ptr<VLSettings> settings;
        std::shared_ptr<VLURLBuilder> urlBuilder;
        std::shared_ptr<VLURLSession> urlSession;
        std::shared_ptr<VLPayloadBuilder> payloadBuilder;
        std::shared_ptr<UIApplication> application;
        std::shared_ptr<NSNotificationCenter> notificationCenter;
    };

    /// `initWithSettings:urlBuilder:urlSession:payloadBuilder:` makes a service that watches for dismissals.
    static std::shared_ptr<VLInterstitialService> serviceWith(Collaborators collaborators);
    ~VLInterstitialService();

    /// `stringForPlacement:` is the placement's name with the server; nothing for a number without one.
    static std::optional<std::string> stringForPlacement(VLInterstitialPlacement placement);

    /// `presentInterstitialWithPlacement:viewController:animated:completionHandler:`. Errors: those of the operation
    /// below, and `VLErrorDomainInterstitial` code 0 for a number without a name.
    void presentInterstitialWithPlacement(VLInterstitialPlacement placement,
                                          const std::shared_ptr<NSObject>& viewController, bool animated,
                                          Handler completionHandler);

    /// `presentInterstitialWithPlacementString:viewController:animated:completionHandler:` takes a `UIViewController`
    /// that is a `VLInterstitialViewController`. Errors: `VLErrorDomainInterstitial` code 1 for null and code 2 for an
    /// object of another kind; those of the HTTP layer; those of parsing, for content that is no JSON object.
    void presentInterstitialWithPlacementString(const std::string& placement,
                                                const std::shared_ptr<NSObject>& viewController, bool animated,
                                                Handler completionHandler);

    /// `handlePlacementResponse:interstitialViewController:animated:completionHandler:` gives the controller what the
    /// server answered and shows it. The object must be of the kind that the operation above checks for; any other is
    /// ignored. Main queue.
    void handlePlacementResponse(const Dictionary& response, const std::shared_ptr<NSObject>& viewController,
                                 bool animated, const Handler& completionHandler);

    /// `presentInterstitialViewController:animated:` shows the controller over the topmost one of the key window; false
    /// when there is none, or when the host has put it somewhere itself. Main queue.
    bool presentInterstitialViewController(const std::shared_ptr<UIViewController>& viewController, bool animated);

    /// The interstitial on screen; null for none. Main queue.
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
    const Collaborators with_;
    NSNotificationCenter::Token dismissalObserver_ = 0;
    // Main queue only. Weak: a controller that is gone is not on screen.
    std::weak_ptr<UIViewController> displayedInterstitialController_;
};

}  // namespace vorlane

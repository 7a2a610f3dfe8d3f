#include "Notifications/VLInterstitialService.h"

#include <fmt/format.h>

#include <utility>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSString+VLHTML.h"
#include "Categories/UIViewController+VLTopViewController.h"
#include "Core/Base/VLCompletion.h"
#include "Core/Base/VLError.h"
#include "Core/Base/VLMainQueueRelease.h"
#include "Core/Base/VLSettings.h"
#include "Network/VLPayloadBuilder.h"
#include "Network/VLPayloadOptions.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Platform/Platform.h"
#include "Platform/UIApplication.h"
#include "Platform/UIViewController.h"
#include "Platform/UIWindow.h"
#include "Public/VLConstants.h"
#include "Public/VLInterstitialViewController.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

constexpr std::int64_t kInvalidPlacement = 0, kNoViewController = 1, kUnsuitableViewController = 2;

NSError interstitialError(std::int64_t code, const std::string& description) {
    return VLError::errorWithDomain(VLErrorDomainInterstitial, code, description);
}

/// The error of an object that cannot show interstitials; `nullopt` if it can.
std::optional<NSError> errorOfViewController(const std::shared_ptr<NSObject>& object) {
    if (!object) return interstitialError(kNoViewController, "The view controller supplied was nil");
    const auto unsuitable = [&object](const char* why) {
        return interstitialError(
            kUnsuitableViewController,
            fmt::format("Interstitial view controller object of type {} {}", object->className(), why));
    };
    if (!dynamic_cast<const UIViewController*>(object.get())) {
        return unsuitable("is not a subclass of UIViewController");
    }
    if (!dynamic_cast<const VLInterstitialViewController*>(object.get())) {
        return unsuitable("does not conform to VLInterstitialViewController protocol");
    }
    return std::nullopt;
}

void logUnsuitable(const std::string& placement, bool isNil, const NSError& error) {
    const char* const format =
        isNil ? "Supplied interstitial view controller was nil - not displaying interstitial for placement {}: {}"
              : "Failed to present interstitial with placement {}: {}";
    logMessage(VLLogLevel::Error, fmt::format(fmt::runtime(format), placement, error.description()));
}

/// The JSON object in the content of the message, or the parse error. Missing content is an empty string.
std::optional<Dictionary> contentOf(const Dictionary& message, std::optional<NSError>& error) {
    const auto encoded = stringForKey(message, "messagecontent").value_or("");
    return vl_dictionaryWithJSON(stringByRemovingPercentEncoding(encoded), error);
}

/// The percent-decoded page in the content; the encoded page if it cannot be decoded.
std::string pageOf(const Dictionary& content) {
    const auto html = stringForKey(content, "html").value_or("");
    return vl_prependHTMLStringWithViewportMetaTag(stringByRemovingPercentEncoding(html).value_or(html));
}

}  // namespace

std::shared_ptr<VLInterstitialService> VLInterstitialService::serviceWith(Collaborators collaborators) {
    const std::shared_ptr<VLInterstitialService> service(new VLInterstitialService(std::move(collaborators)));
    service->observeDismissal();
    return service;
}

VLInterstitialService::VLInterstitialService(Collaborators collaborators) : collaborators_(std::move(collaborators)) {}

VLInterstitialService::~VLInterstitialService() {
    collaborators_.notificationCenter->removeObserver(dismissalObserver_);
}

void VLInterstitialService::observeDismissal() {
    dismissalObserver_ = collaborators_.notificationCenter->addObserver(
        VLNotificationInterstitialWasDismissed, [weakSelf = weak_from_this()](const NSNotification& notification) {
            if (const auto self = weakSelf.lock()) self->interstitialWasDismissed(notification);
        });
}

void VLInterstitialService::interstitialWasDismissed(const NSNotification& notification) {
    if (Platform::current().mainQueue()->isCurrent()) return displayedInterstitialController_.reset();
    onMainQueue([weakSelf = weak_from_this(), notification] {
        if (const auto self = weakSelf.lock()) self->interstitialWasDismissed(notification);
    });
}

std::optional<std::string> VLInterstitialService::stringForPlacement(VLInterstitialPlacement placement) {
    static constexpr const char* kNames[] = {"App Open", "Feedback", "Push Open", "Store Launch"};
    const auto offsetFrom = [placement](VLInterstitialPlacement first) {
        return static_cast<std::uint64_t>(placement) - static_cast<std::uint64_t>(first);
    };
    if (placement <= VLInterstitialPlacement::StoreLaunch) return kNames[offsetFrom(VLInterstitialPlacement::AppOpen)];
    if (placement <= VLInterstitialPlacement::Placement9) {
        return fmt::format("Placement {}", offsetFrom(VLInterstitialPlacement::Placement1) + 1);
    }
    if (placement <= VLInterstitialPlacement::PlacementZ) {
        return fmt::format("Placement {}",
                           static_cast<char>('A' + static_cast<int>(offsetFrom(VLInterstitialPlacement::PlacementA))));
    }
    return std::nullopt;
}

void VLInterstitialService::presentInterstitialWithPlacement(VLInterstitialPlacement placement,
                                                             const std::shared_ptr<NSObject>& viewController,
                                                             bool animated, Handler completionHandler) {
    if (const auto name = stringForPlacement(placement)) {
        return presentInterstitialWithPlacementString(*name, viewController, animated, std::move(completionHandler));
    }
    const auto number = static_cast<std::uint64_t>(placement);
    logMessage(
        VLLogLevel::Error,
        fmt::format("Interstitial: ignored an attempt to display invalid placement with raw value: \"{}\".", number));
    completeOnMainQueue(
        completionHandler, false,
        std::optional(interstitialError(kInvalidPlacement,
                                        fmt::format("Could not display invalid placement with raw value {}", number))));
}

void VLInterstitialService::presentInterstitialWithPlacementString(const std::string& placement,
                                                                   const std::shared_ptr<NSObject>& viewController,
                                                                   bool animated, Handler completionHandler) {
    onMainQueue([self = shared_from_this(), placement, viewController = releasedOnMainQueue(viewController), animated,
                 handler = std::move(completionHandler)] {
        const auto error = errorOfViewController(viewController);
        if (!error) return self->fetchPlacement(placement, viewController, animated, handler);
        logUnsuitable(placement, !viewController, *error);
        if (handler) handler(false, error);
    });
}

void VLInterstitialService::fetchPlacement(const std::string& placement,
                                           const std::shared_ptr<NSObject>& viewController, bool animated,
                                           const Handler& completionHandler) {
    collaborators_.urlSession->POSTWithJSONResponse(
        collaborators_.urlBuilder->interstitialURLWithPlacement(placement), requestPayload(), false,
        [self = shared_from_this(), viewController, animated, handler = completionHandler](
            const std::optional<Dictionary>& response, std::int64_t /*status*/, const std::optional<NSError>& error) {
            if (error || !response) {
                logMessage(VLLogLevel::Error, fmt::format("Interstitial: request failed with error: {}",
                                                          error ? error->description() : "(null)"));
                return completeOnMainQueue(handler, false, error);
            }
            onMainQueue([self, viewController, animated, handler, response = *response] {
                self->handlePlacementResponse(response, viewController, animated, handler);
            });
        });
}

Dictionary VLInterstitialService::requestPayload() const {
    return collaborators_.payloadBuilder->payloadWithOptions([this](VLPayloadOptions& options) {
        options.body = {{"getContent", true},
                        {"interstitial", Dictionary{{"timezone", collaborators_.settings->timezoneOffSetFromGMT()}}},
                        {"sid", collaborators_.settings->sessionId()}};
        options.includeDeviceData = true;
        options.deviceDataKey = VLPayloadOptions::kDeviceDataKey;
    });
}

void VLInterstitialService::handlePlacementResponse(const Dictionary& response,
                                                    const std::shared_ptr<NSObject>& viewController, bool animated,
                                                    const Handler& completionHandler) {
    const auto* message = dictionaryForKey(response, "message");
    if (!message) {
        logMessage(VLLogLevel::Info, "No interstitial message content found for this tracking id.");
        return completeOnMainQueue(completionHandler, false, std::nullopt);
    }
    std::optional<NSError> error;
    const auto content = contentOf(*message, error);
    if (!content) {
        logMessage(VLLogLevel::Error, "Cannot display interstitial because its HTML content was corrupted.");
        return completeOnMainQueue(completionHandler, false, error);
    }
    const auto interstitial = std::dynamic_pointer_cast<VLInterstitialViewController>(viewController);
    const auto controller = std::dynamic_pointer_cast<UIViewController>(viewController);
    if (!interstitial || !controller) return completeOnMainQueue(completionHandler, false, std::nullopt);
    interstitial->setHtmlContent(pageOf(*content));
    interstitial->setPhash(stringForKey(*message, "phash"));
    interstitial->setMetadata(*content);
    // The reference of the host: the interstitial counts as displayed as long as the host keeps its controller.
    const auto own = controller->weak_from_this().lock();
    show(own ? own : controller, animated, completionHandler);
}

void VLInterstitialService::show(const std::shared_ptr<UIViewController>& viewController, bool animated,
                                 const Handler& completionHandler) {
    if (!displayedInterstitialController_.expired()) {
        const auto phash = dynamic_cast<const VLInterstitialViewController&>(*viewController).phash();
        logMessage(VLLogLevel::Info,
                   fmt::format("Interstitial: is already being displayed. Skipping display of interstitial with "
                               "phash: {}",
                               vl_description(phash)));
        return completeOnMainQueue(completionHandler, false, std::nullopt);
    }
    displayedInterstitialController_ = viewController;
    onMainQueue([self = shared_from_this(), viewController, animated, completionHandler] {
        const bool isPresented = self->presentInterstitialViewController(viewController, animated);
        if (!isPresented) self->displayedInterstitialController_.reset();
        if (completionHandler) completionHandler(isPresented, std::nullopt);
    });
}

bool VLInterstitialService::presentInterstitialViewController(const std::shared_ptr<UIViewController>& viewController,
                                                              bool animated) {
    const auto window = collaborators_.application->keyWindow();
    const auto top = vl_topViewController(window ? window->rootViewController() : nullptr);
    if (!top) return false;
    viewController->setModalTransitionStyle(UIModalTransitionStyle::CrossDissolve);
    viewController->setModalPresentationStyle(UIModalPresentationStyle::OverCurrentContext);
    top->presentViewController(viewController, animated, nullptr);
    // A controller that the host has placed elsewhere is not presented; one that never left the screen still is.
    if (top->presentedViewController() != viewController && !viewController->presentingViewController()) return false;
    const auto interstitial = std::dynamic_pointer_cast<VLInterstitialViewController>(viewController);
    const auto webView = interstitial ? interstitial->webView() : nullptr;
    if (webView) webView->loadHTMLString(interstitial->htmlContent(), std::nullopt);
    return true;
}

}  // namespace vorlane

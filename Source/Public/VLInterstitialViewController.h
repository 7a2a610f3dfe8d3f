#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Platform/UIWebView.h"
#include "Public/VLExport.h"
#include "Public/VLTypes.h"

namespace vorlane {

/// The interface of a view controller that shows interstitials. The application derives its own from `UIViewController`
/// and from this class.
///
/// The library sets the page, presents the controller over the topmost screen and lets its web view load the page. The
/// controller passes links with the scheme "vorlane://" to `Vorlane::openVorlaneDeepLink()`. When it has left the
/// screen, it posts `VLNotificationInterstitialWasDismissed` on the platform's notification centre; until then no other
/// interstitial is shown. Main queue only.
class VORLANE_EXPORT VLInterstitialViewController {
public:
    virtual ~VLInterstitialViewController();

    /// The HTML page.
    virtual std::string htmlContent() const = 0;
    virtual void setHtmlContent(const std::string& htmlContent) = 0;

    /// The hash of the message, or `nullopt` if the service sent none.
    virtual std::optional<std::string> phash() const = 0;
    virtual void setPhash(const std::optional<std::string>& phash) = 0;

    /// The view that loads the page, or null for a controller that shows it in another way.
    virtual std::shared_ptr<UIWebView> webView() const = 0;

    /// Receives the whole answer of the service, including the page. Optional.
    virtual void setMetadata(const Dictionary& /*metadata*/) {}
};

}  // namespace vorlane

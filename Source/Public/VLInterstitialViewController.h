#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Platform/UIWebView.h"
#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// What a view controller of the application must be able to do to show interstitials: derive it from
/// `UIViewController` and from this class.
///
/// The library sets what it is to show, presents it over the topmost screen and has its web view load the page. When it
/// has gone from the screen, the controller posts `VLNotificationInterstitialWasDismissed` on the platform's
/// notification centre; until then no other interstitial is shown. Links of the page with the scheme "vorlane://" go to
/// `Vorlane::openVorlaneDeepLink()`. Main queue only.
class VORLANE_EXPORT VLInterstitialViewController {
public:
    virtual ~VLInterstitialViewController();

    /// The page.
    virtual std::string htmlContent() const = 0;
    virtual void setHtmlContent(const std::string& htmlContent) = 0;

    /// The hash that names the message; nothing when the service sent none.
    virtual std::optional<std::string> phash() const = 0;
    virtual void setPhash(const std::optional<std::string>& phash) = 0;

    /// What shows the page; null for a controller that shows it in another way.
    virtual std::shared_ptr<UIWebView> webView() const = 0;

    /// Everything that came with the page, the page included. A controller may leave this out.
    virtual void setMetadata(const Dictionary& /*metadata*/) {}
};

}  // namespace vorlane

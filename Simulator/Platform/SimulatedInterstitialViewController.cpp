#include "Simulator/Platform/SimulatedInterstitialViewController.h"

#include "Platform/NSNotificationCenter.h"
#include "Platform/Platform.h"
#include "Public/VLConstants.h"

namespace vorlane {

class SimulatedInterstitialViewController::WebView : public UIWebView {
public:
    void loadHTMLString(const std::string& html, const std::optional<NSURL>& baseURL) override {
        pages.push_back(html);
        baseURLs.push_back(baseURL);
    }

    std::vector<std::string> pages;
    std::vector<std::optional<NSURL>> baseURLs;
};

SimulatedInterstitialViewController::SimulatedInterstitialViewController(Metadata metadata)
    : takesMetadata_(metadata == Metadata::Taken), webView_(std::make_shared<WebView>()) {}

SimulatedInterstitialViewController::~SimulatedInterstitialViewController() = default;

std::shared_ptr<UIWebView> SimulatedInterstitialViewController::webView() const { return webView_; }

void SimulatedInterstitialViewController::setMetadata(const Dictionary& metadata) {
    if (takesMetadata_) metadata_ = metadata;
}

const std::vector<std::string>& SimulatedInterstitialViewController::loadedPages() const { return webView_->pages; }

const std::vector<std::optional<NSURL>>& SimulatedInterstitialViewController::baseURLs() const {
    return webView_->baseURLs;
}

void SimulatedInterstitialViewController::viewDidAppear(bool animated) {
    ++appearances_;
    wasAnimated_ = animated;
    if (appearanceObserver_) appearanceObserver_(*this);
}

void SimulatedInterstitialViewController::close() {
    const auto presenting = presentingViewController();
    if (presenting) presenting->dismissViewControllerAnimated(true, nullptr);
    Platform::current().notificationCenter()->postNotificationName(VLNotificationInterstitialWasDismissed);
}

}  // namespace vorlane

#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/UIViewController.h"
#include "Platform/UIWebView.h"
#include "Public/VLInterstitialViewController.h"
#include "Public/VLValue.h"

namespace vorlane {

/// A host's view controller for interstitials that displays nothing and records everything. Main thread only.
class SimulatedInterstitialViewController : public UIViewController, public VLInterstitialViewController {
public:
    enum class Metadata { Ignored, Taken };

    explicit SimulatedInterstitialViewController(Metadata metadata = Metadata::Ignored);
    ~SimulatedInterstitialViewController() override;

    std::string htmlContent() const override { return htmlContent_; }
    void setHtmlContent(const std::string& htmlContent) override { htmlContent_ = htmlContent; }
    std::optional<std::string> phash() const override { return phash_; }
    void setPhash(const std::optional<std::string>& phash) override { phash_ = phash; }
    std::shared_ptr<UIWebView> webView() const override;
    void setMetadata(const Dictionary& metadata) override;

    bool takesMetadata() const { return takesMetadata_; }
    /// `nullopt` before the first call, and for a controller that ignores metadata.
    const std::optional<Dictionary>& metadata() const { return metadata_; }
    /// The pages loaded into its web view, and their base URLs.
    const std::vector<std::string>& loadedPages() const;
    const std::vector<std::optional<NSURL>>& baseURLs() const;
    /// The number of appearances, and whether the last one was animated.
    int appearances() const { return appearances_; }
    bool wasAnimated() const { return wasAnimated_; }

    /// Called after each appearance.
    void setAppearanceObserver(std::function<void(const SimulatedInterstitialViewController& controller)> observer) {
        appearanceObserver_ = std::move(observer);
    }

    /// The user closes it: dismisses it with everything in front of it, and posts its dismissal.
    void close();

protected:
    void viewDidAppear(bool animated) override;

private:
    class WebView;

    // Fixed at construction.
    const bool takesMetadata_;
    const std::shared_ptr<WebView> webView_;
    std::function<void(const SimulatedInterstitialViewController&)> appearanceObserver_;
    std::string htmlContent_;
    std::optional<std::string> phash_;
    std::optional<Dictionary> metadata_;
    int appearances_ = 0;
    bool wasAnimated_ = false;
};

}  // namespace vorlane

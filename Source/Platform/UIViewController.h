#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "Platform/NSObject.h"
#include "Public/VLExport.h"

namespace vorlane {

enum class UIModalTransitionStyle : std::int64_t { CoverVertical = 0, FlipHorizontal = 1, CrossDissolve = 2 };
enum class UIModalPresentationStyle : std::int64_t {
    FullScreen = 0,
    PageSheet = 1,
    FormSheet = 2,
    CurrentContext = 3,
    Custom = 4,
    OverFullScreen = 5,
    OverCurrentContext = 6
};

/// One screen of the application. This class records which view controller presents which. An application derives its
/// own screens from it, and shows and hides them when `viewDidAppear()` and `viewDidDisappear()` are called. Main queue
/// only.
///
/// A view controller keeps the one that it presents alive.
class VORLANE_EXPORT UIViewController : public NSObject, public std::enable_shared_from_this<UIViewController> {
public:
    ~UIViewController() override;

    UIModalTransitionStyle modalTransitionStyle() const { return modalTransitionStyle_; }
    void setModalTransitionStyle(UIModalTransitionStyle style) { modalTransitionStyle_ = style; }
    UIModalPresentationStyle modalPresentationStyle() const { return modalPresentationStyle_; }
    void setModalPresentationStyle(UIModalPresentationStyle style) { modalPresentationStyle_ = style; }

    /// The navigation controller that contains this one, or null.
    std::shared_ptr<UIViewController> parentViewController() const { return parent_.lock(); }
    /// The view controllers that this one, or the one that contains it, presents and is presented by; or null.
    std::shared_ptr<UIViewController> presentedViewController() const;
    std::shared_ptr<UIViewController> presentingViewController() const;

    /// `presentViewController:animated:completion:` shows `controller` over this one, then calls `completion`, which
    /// may be empty. An alert that is already presented stays in front.
    ///
    /// Ignored for null, while another view controller is presented, and for a controller that is already on screen or
    /// contained in another one.
    void presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                               const std::function<void()>& completion);

    /// `dismissViewControllerAnimated:completion:` removes the view controller that this one presents from the screen,
    /// with all that are presented over it, the topmost first. If this controller presents none, it is itself removed.
    /// `completion` may be empty; it is always called.
    void dismissViewControllerAnimated(bool animated, const std::function<void()>& completion);

protected:
    /// Called when the view controller has appeared on screen or disappeared from it.
    virtual void viewDidAppear(bool /*animated*/) {}
    virtual void viewDidDisappear(bool /*animated*/) {}

private:
    // Sets `parent_`.
    friend class UINavigationController;

    bool canPresent(const UIViewController& controller) const;
    void dismissPresented(bool animated);

    UIModalTransitionStyle modalTransitionStyle_ = UIModalTransitionStyle::CoverVertical;
    UIModalPresentationStyle modalPresentationStyle_ = UIModalPresentationStyle::FullScreen;
    std::weak_ptr<UIViewController> parent_;
    std::weak_ptr<UIViewController> presenting_;
    std::shared_ptr<UIViewController> presented_;
};

}  // namespace vorlane

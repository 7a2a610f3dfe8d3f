#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "Platform/NSObject.h"
#include "Public/VLExport.h"

namespace vorlane {

enum class UIModalTransitionStyle : std::int64_t { coverVertical = 0, flipHorizontal = 1, crossDissolve = 2 };
enum class UIModalPresentationStyle : std::int64_t {
    fullScreen = 0,
    pageSheet = 1,
    formSheet = 2,
    currentContext = 3,
    custom = 4,
    overFullScreen = 5,
    overCurrentContext = 6
};

/// One screen of the application. An application derives its own screens from it, and shows and hides them when
/// `viewDidAppear()` and `viewDidDisappear()` are called; here is kept who is presented by whom. Main queue only.
///
/// A presented controller is held by the one that presents it.
class VORLANE_EXPORT UIViewController : public NSObject, public std::enable_shared_from_this<UIViewController> {
public:
    ~UIViewController() override;

    UIModalTransitionStyle modalTransitionStyle() const { return modalTransitionStyle_; }
    void setModalTransitionStyle(UIModalTransitionStyle style) { modalTransitionStyle_ = style; }
    UIModalPresentationStyle modalPresentationStyle() const { return modalPresentationStyle_; }
    void setModalPresentationStyle(UIModalPresentationStyle style) { modalPresentationStyle_ = style; }

    /// The navigation controller that this one is in; null when it is in none.
    std::shared_ptr<UIViewController> parentViewController() const { return parent_.lock(); }
    /// What this controller, or the one that it is in, presents; and what it is presented by. Null for nothing.
    std::shared_ptr<UIViewController> presentedViewController() const;
    std::shared_ptr<UIViewController> presentingViewController() const;

    /// `presentViewController:animated:completion:` shows `controller` over this one, then calls `completion`, which
    /// may be empty. An alert that is shown already stays in front.
    ///
    /// Ignored for null, while something else is presented, and for a controller that is on screen already or in
    /// another one.
    void presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                               const std::function<void()>& completion);

    /// `dismissViewControllerAnimated:completion:` takes what this controller presents from the screen, with all that
    /// is presented over it, the topmost first; where it presents nothing, this controller itself. `completion` may be
    /// empty; it is called in any case.
    void dismissViewControllerAnimated(bool animated, const std::function<void()>& completion);

protected:
    /// The controller has come to the screen, or has gone from it, by one of the two operations above.
    virtual void viewDidAppear(bool /*animated*/) {}
    virtual void viewDidDisappear(bool /*animated*/) {}

private:
    // Sets itself as the parent of what it contains.
    friend class UINavigationController;

    bool canPresent(const UIViewController& controller) const;
    void dismissPresented(bool animated);

    UIModalTransitionStyle modalTransitionStyle_ = UIModalTransitionStyle::coverVertical;
    UIModalPresentationStyle modalPresentationStyle_ = UIModalPresentationStyle::fullScreen;
    std::weak_ptr<UIViewController> parent_;
    std::weak_ptr<UIViewController> presenting_;
    std::shared_ptr<UIViewController> presented_;
};

}  // namespace vorlane

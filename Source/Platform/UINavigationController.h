#pragma once

#include <memory>
#include <vector>

#include "Platform/UIViewController.h"
#include "Public/VLExport.h"

namespace vorlane {

/// A stack of screens, of which the top one shows. Main queue only.
class VORLANE_EXPORT UINavigationController : public UIViewController {
public:
    ~UINavigationController() override;

    /// The screens, from the bottom up.
    const std::vector<std::shared_ptr<UIViewController>>& viewControllers() const { return viewControllers_; }
    /// The screen that shows; null for an empty stack.
    std::shared_ptr<UIViewController> topViewController() const;

    /// `pushViewController:animated:` puts a screen on top. Ignored for null and for a controller that is in a stack,
    /// presented or this one's own container already.
    void pushViewController(const std::shared_ptr<UIViewController>& controller, bool animated);
    /// `popViewControllerAnimated:` takes the top screen off and gives it; the bottom one stays, and null is given.
    std::shared_ptr<UIViewController> popViewControllerAnimated(bool animated);

private:
    bool isWithin(const UIViewController& controller) const;

    std::vector<std::shared_ptr<UIViewController>> viewControllers_;
};

}  // namespace vorlane

#pragma once

#include <memory>
#include <vector>

#include "Platform/UIViewController.h"
#include "Public/VLExport.h"

namespace vorlane {

/// A stack of view controllers of which the top one is visible. Main queue only.
class VORLANE_EXPORT UINavigationController : public UIViewController {
public:
    ~UINavigationController() override;

    /// From bottom to top.
    const std::vector<std::shared_ptr<UIViewController>>& viewControllers() const { return viewControllers_; }
    /// The visible view controller, or null for an empty stack.
    std::shared_ptr<UIViewController> topViewController() const;

    /// `pushViewController:animated:` adds a view controller on top. Ignored for null, for a controller that is already
    /// presented or in a stack, and for this controller and its own containers.
    void pushViewController(const std::shared_ptr<UIViewController>& controller, bool animated);
    /// `popViewControllerAnimated:` removes the top view controller and returns it. The bottom one stays; null is
    /// returned instead.
    std::shared_ptr<UIViewController> popViewControllerAnimated(bool animated);

private:
    bool isWithin(const UIViewController& controller) const;

    std::vector<std::shared_ptr<UIViewController>> viewControllers_;
};

}  // namespace vorlane

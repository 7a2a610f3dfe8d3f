#include "Platform/UINavigationController.h"

namespace vorlane {

UINavigationController::~UINavigationController() = default;

std::shared_ptr<UIViewController> UINavigationController::topViewController() const {
    return viewControllers_.empty() ? nullptr : viewControllers_.back();
}

void UINavigationController::pushViewController(const std::shared_ptr<UIViewController>& controller, bool animated) {
    if (!controller || controller->parent_.lock() || controller->presenting_.lock() || isWithin(*controller)) return;
    const auto below = topViewController();
    controller->parent_ = weak_from_this();
    viewControllers_.push_back(controller);
    if (below) below->viewDidDisappear(animated);
    controller->viewDidAppear(animated);
}

std::shared_ptr<UIViewController> UINavigationController::popViewControllerAnimated(bool animated) {
    if (viewControllers_.size() < 2) return nullptr;
    auto popped = std::move(viewControllers_.back());
    viewControllers_.pop_back();
    popped->parent_.reset();
    popped->viewDidDisappear(animated);
    // The call may have changed the stack.
    if (const auto top = topViewController()) top->viewDidAppear(animated);
    return popped;
}

/// Whether this controller is `controller` or is contained in it.
bool UINavigationController::isWithin(const UIViewController& controller) const {
    if (&controller == this) return true;
    for (auto parent = parentViewController(); parent; parent = parent->parentViewController()) {
        if (parent.get() == &controller) return true;
    }
    return false;
}

}  // namespace vorlane

#include "Platform/UIViewController.h"

#include <utility>
#include <vector>

#include "Platform/UIAlertController.h"

namespace vorlane {

namespace {

bool isAlert(const std::shared_ptr<UIViewController>& controller) {
    return dynamic_cast<const UIAlertController*>(controller.get()) != nullptr;
}

}  // namespace

UIViewController::~UIViewController() = default;

std::shared_ptr<UIViewController> UIViewController::presentedViewController() const {
    if (presented_) return presented_;
    const auto parent = parent_.lock();
    return parent ? parent->presentedViewController() : nullptr;
}

std::shared_ptr<UIViewController> UIViewController::presentingViewController() const {
    if (auto presenting = presenting_.lock()) return presenting;
    const auto parent = parent_.lock();
    return parent ? parent->presentingViewController() : nullptr;
}

void UIViewController::presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                                             const std::function<void()>& completion) {
    // The container presents.
    if (const auto parent = parent_.lock()) return parent->presentViewController(controller, animated, completion);
    if (!controller || !canPresent(*controller)) return;
    if (presented_) {
        presented_->presenting_ = controller;
        controller->presented_ = std::move(presented_);
    }
    presented_ = controller;
    controller->presenting_ = weak_from_this();
    controller->viewDidAppear(animated);
    if (completion) completion();
}

bool UIViewController::canPresent(const UIViewController& controller) const {
    if (presented_ && !isAlert(presented_)) return false;
    if (controller.presented_ || controller.parent_.lock() || controller.presenting_.lock()) return false;
    return &controller != this;
}

void UIViewController::dismissViewControllerAnimated(bool animated, const std::function<void()>& completion) {
    if (const auto parent = parent_.lock()) return parent->dismissViewControllerAnimated(animated, completion);
    const auto presenting = presenting_.lock();
    if (presented_) {
        dismissPresented(animated);
    } else if (presenting) {
        presenting->dismissPresented(animated);
    }
    if (completion) completion();
}

void UIViewController::dismissPresented(bool animated) {
    std::vector<std::shared_ptr<UIViewController>> gone;
    for (auto next = std::move(presented_); next; next = std::move(gone.back()->presented_)) {
        next->presenting_.reset();
        gone.push_back(next);
    }
    for (auto controller = gone.rbegin(); controller != gone.rend(); ++controller) {
        (*controller)->viewDidDisappear(animated);
    }
}

}  // namespace vorlane

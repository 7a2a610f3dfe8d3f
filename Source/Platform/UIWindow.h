#pragma once

#include <memory>
#include <utility>

#include "Platform/UIViewController.h"

namespace vorlane {

/// A window of the application. Main queue only.
class UIWindow {
public:
    explicit UIWindow(std::shared_ptr<UIViewController> rootViewController)
        : rootViewController_(std::move(rootViewController)) {}

    /// The view controller at the bottom of the window, or null.
    const std::shared_ptr<UIViewController>& rootViewController() const { return rootViewController_; }
    void setRootViewController(std::shared_ptr<UIViewController> controller) {
        rootViewController_ = std::move(controller);
    }

private:
    std::shared_ptr<UIViewController> rootViewController_;
};

}  // namespace vorlane

#pragma once

#include <memory>

namespace vorlane {

class UIViewController;

/// `vl_topViewController:`, `vl_topViewController` returns the controller that the user sees if `root` is the root: it
/// follows navigation controllers and presented controllers, but not an alert. Returns null for null and for an empty
/// navigation controller. Main queue only.
std::shared_ptr<UIViewController> vl_topViewController(const std::shared_ptr<UIViewController>& root);

}  // namespace vorlane

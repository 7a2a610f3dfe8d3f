#pragma once

#include <memory>

namespace vorlane {

class UIViewController;

/// `vl_topViewController:`, `vl_topViewController` of `root`: the controller that the user sees when it is at the
/// bottom, through navigation controllers and what is presented, but not to an alert. Null for null and for an empty
/// navigation controller. Main queue.
std::shared_ptr<UIViewController> vl_topViewController(const std::shared_ptr<UIViewController>& root);

}  // namespace vorlane

#include "Categories/UIViewController+VLTopViewController.h"

#include "Platform/UIAlertController.h"
#include "Platform/UINavigationController.h"

namespace vorlane {

std::shared_ptr<UIViewController> vl_topViewController(const std::shared_ptr<UIViewController>& root) {
    auto top = root;
    while (top) {
        if (const auto navigation = std::dynamic_pointer_cast<UINavigationController>(top)) {
            top = navigation->topViewController();
            continue;
        }
        const auto presented = top->presentedViewController();
        if (!presented || std::dynamic_pointer_cast<UIAlertController>(presented)) return top;
        top = presented;
    }
    return nullptr;
}

}  // namespace vorlane

#include <gtest/gtest.h>

#include "Categories/UIViewController+VLTopViewController.h"
#include "Platform/UIAlertController.h"
#include "Platform/UINavigationController.h"

namespace vorlane {

namespace {

class VLTopViewControllerTest : public testing::Test {
protected:
    static std::shared_ptr<UIViewController> screen() { return std::make_shared<UIViewController>(); }

    std::shared_ptr<UIViewController> root = screen();
    std::shared_ptr<UIViewController> presented = screen();
    std::shared_ptr<UINavigationController> navigation = std::make_shared<UINavigationController>();
    std::shared_ptr<UIAlertController> alert = std::make_shared<UIAlertController>();
};

TEST_F(VLTopViewControllerTest, NullHasNoTop) { EXPECT_EQ(vl_topViewController(nullptr), nullptr); }

TEST_F(VLTopViewControllerTest, AScreenAloneIsTheTop) { EXPECT_EQ(vl_topViewController(root), root); }

TEST_F(VLTopViewControllerTest, PresentedControllersAreFollowed) {
    const auto last = screen();
    root->presentViewController(presented, false, nullptr);
    presented->presentViewController(last, false, nullptr);
    EXPECT_EQ(vl_topViewController(root), last);
    EXPECT_EQ(vl_topViewController(presented), last);
}

TEST_F(VLTopViewControllerTest, AnAlertIsNotFollowed) {
    root->presentViewController(presented, false, nullptr);
    presented->presentViewController(alert, false, nullptr);
    EXPECT_EQ(vl_topViewController(root), presented);
}

TEST_F(VLTopViewControllerTest, ControllersPresentedByAnAlertAreNotFollowed) {
    root->presentViewController(alert, false, nullptr);
    alert->presentViewController(presented, false, nullptr);
    EXPECT_EQ(vl_topViewController(root), root);
}

TEST_F(VLTopViewControllerTest, AnAlertAsTheRootIsTheTop) { EXPECT_EQ(vl_topViewController(alert), alert); }

TEST_F(VLTopViewControllerTest, TheTopOfANavigationControllerIsFollowed) {
    navigation->pushViewController(root, false);
    navigation->pushViewController(presented, false);
    EXPECT_EQ(vl_topViewController(navigation), presented);
}

TEST_F(VLTopViewControllerTest, AControllerPresentedByANavigationControllerIsTheTop) {
    navigation->pushViewController(root, false);
    navigation->presentViewController(presented, false, nullptr);
    EXPECT_EQ(vl_topViewController(navigation), presented);
}

TEST_F(VLTopViewControllerTest, APresentedNavigationControllerIsFollowed) {
    const auto inner = screen();
    navigation->pushViewController(inner, false);
    root->presentViewController(navigation, false, nullptr);
    EXPECT_EQ(vl_topViewController(root), inner);
}

TEST_F(VLTopViewControllerTest, NestedNavigationControllersAreFollowed) {
    const auto inner = std::make_shared<UINavigationController>();
    inner->pushViewController(root, false);
    navigation->pushViewController(inner, false);
    EXPECT_EQ(vl_topViewController(navigation), root);
}

TEST_F(VLTopViewControllerTest, AnEmptyNavigationControllerHasNoTop) {
    EXPECT_EQ(vl_topViewController(navigation), nullptr);
    root->presentViewController(navigation, false, nullptr);
    EXPECT_EQ(vl_topViewController(root), nullptr);
}

}  // namespace

}  // namespace vorlane

#include "Platform/UIViewController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Platform/UIAlertController.h"
#include "Platform/UINavigationController.h"
#include "Platform/UIWindow.h"

namespace vorlane {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Records when it appears and disappears.
class NotingScreen : public UIViewController {
public:
    NotingScreen(std::string name, std::vector<std::string>& notes) : name_(std::move(name)), notes_(notes) {}

protected:
    void viewDidAppear(bool animated) override { notes_.push_back(name_ + (animated ? " glides in" : " is there")); }
    void viewDidDisappear(bool animated) override { notes_.push_back(name_ + (animated ? " glides out" : " is gone")); }

private:
    const std::string name_;
    std::vector<std::string>& notes_;
};

class UIViewControllerTest : public testing::Test {
protected:
    std::shared_ptr<NotingScreen> screen(const std::string& name) {
        return std::make_shared<NotingScreen>(name, notes);
    }

    std::vector<std::string> notes;
    std::shared_ptr<NotingScreen> root = screen("root");
    std::shared_ptr<NotingScreen> middle = screen("middle");
    std::shared_ptr<NotingScreen> top = screen("top");
};

TEST_F(UIViewControllerTest, ByDefaultAControllerCoversTheScreen) {
    EXPECT_EQ(root->modalTransitionStyle(), UIModalTransitionStyle::CoverVertical);
    EXPECT_EQ(root->modalPresentationStyle(), UIModalPresentationStyle::FullScreen);
    EXPECT_EQ(root->presentedViewController(), nullptr);
    EXPECT_EQ(root->presentingViewController(), nullptr);
    EXPECT_EQ(root->parentViewController(), nullptr);
}

TEST_F(UIViewControllerTest, TheStylesHaveTheirNumbers) {
    EXPECT_EQ(static_cast<int>(UIModalTransitionStyle::CrossDissolve), 2);
    EXPECT_EQ(static_cast<int>(UIModalPresentationStyle::OverCurrentContext), 6);
    root->setModalTransitionStyle(UIModalTransitionStyle::CrossDissolve);
    root->setModalPresentationStyle(UIModalPresentationStyle::OverCurrentContext);
    EXPECT_EQ(root->modalTransitionStyle(), UIModalTransitionStyle::CrossDissolve);
    EXPECT_EQ(root->modalPresentationStyle(), UIModalPresentationStyle::OverCurrentContext);
}

TEST_F(UIViewControllerTest, PresentingShowsAndThenCompletes) {
    root->presentViewController(middle, true, [this] { notes.push_back("completed"); });
    EXPECT_EQ(root->presentedViewController(), middle);
    EXPECT_EQ(middle->presentingViewController(), root);
    EXPECT_THAT(notes, ElementsAre("middle glides in", "completed"));
}

TEST_F(UIViewControllerTest, APresentedControllerIsKeptAlive) {
    const std::weak_ptr<UIViewController> seen = middle;
    root->presentViewController(middle, false, nullptr);
    middle.reset();
    EXPECT_FALSE(seen.expired());
    root->dismissViewControllerAnimated(false, nullptr);
    EXPECT_TRUE(seen.expired());
}

TEST_F(UIViewControllerTest, APresentingControllerIsNotKeptAlive) {
    root->presentViewController(middle, false, nullptr);
    root.reset();
    EXPECT_EQ(middle->presentingViewController(), nullptr);
}

TEST_F(UIViewControllerTest, DismissingRemovesTheTopmostFirst) {
    root->presentViewController(middle, false, nullptr);
    middle->presentViewController(top, false, nullptr);
    notes.clear();
    root->dismissViewControllerAnimated(true, [this] { notes.push_back("completed"); });
    EXPECT_THAT(notes, ElementsAre("top glides out", "middle glides out", "completed"));
    EXPECT_EQ(root->presentedViewController(), nullptr);
    EXPECT_EQ(middle->presentedViewController(), nullptr);
    EXPECT_EQ(middle->presentingViewController(), nullptr);
    EXPECT_EQ(top->presentingViewController(), nullptr);
}

TEST_F(UIViewControllerTest, AControllerMayDismissItself) {
    root->presentViewController(middle, false, nullptr);
    middle->dismissViewControllerAnimated(false, nullptr);
    EXPECT_EQ(root->presentedViewController(), nullptr);
    EXPECT_THAT(notes, ElementsAre("middle is there", "middle is gone"));
}

TEST_F(UIViewControllerTest, DismissingNothingOnlyCompletes) {
    root->dismissViewControllerAnimated(false, [this] { notes.push_back("completed"); });
    EXPECT_THAT(notes, ElementsAre("completed"));
}

TEST_F(UIViewControllerTest, ADismissedControllerCanBePresentedAgain) {
    root->presentViewController(middle, false, nullptr);
    root->dismissViewControllerAnimated(false, nullptr);
    root->presentViewController(middle, false, nullptr);
    EXPECT_EQ(root->presentedViewController(), middle);
}

TEST_F(UIViewControllerTest, ImpossiblePresentationsAreIgnored) {
    const auto completion = [this] { notes.push_back("completed"); };
    root->presentViewController(middle, false, nullptr);
    notes.clear();
    root->presentViewController(nullptr, false, completion);
    root->presentViewController(top, false, completion);     // another one is presented
    top->presentViewController(middle, false, completion);   // already on screen
    top->presentViewController(top, false, completion);      // itself
    middle->presentViewController(root, false, completion);  // its presenter
    middle->presentViewController(middle, false, completion);
    EXPECT_THAT(notes, IsEmpty());
    EXPECT_EQ(root->presentedViewController(), middle);
    EXPECT_EQ(middle->presentedViewController(), nullptr);
    EXPECT_EQ(top->presentedViewController(), nullptr);
}

TEST_F(UIViewControllerTest, AnAlertStaysInFrontOfLaterControllers) {
    const auto alert = std::make_shared<UIAlertController>();
    root->presentViewController(alert, false, nullptr);
    root->presentViewController(middle, false, nullptr);
    EXPECT_EQ(root->presentedViewController(), middle);
    EXPECT_EQ(middle->presentedViewController(), alert);
    EXPECT_EQ(alert->presentingViewController(), middle);
    alert->dismissViewControllerAnimated(false, nullptr);
    EXPECT_EQ(root->presentedViewController(), middle);
    EXPECT_EQ(middle->presentedViewController(), nullptr);
}

TEST_F(UIViewControllerTest, ANavigationControllerPresentsForItsContents) {
    const auto navigation = std::make_shared<UINavigationController>();
    navigation->pushViewController(root, false);
    root->presentViewController(middle, false, nullptr);
    EXPECT_EQ(navigation->presentedViewController(), middle);
    EXPECT_EQ(root->presentedViewController(), middle);
    EXPECT_EQ(middle->presentingViewController(), navigation);
    root->dismissViewControllerAnimated(false, nullptr);
    EXPECT_EQ(navigation->presentedViewController(), nullptr);
}

TEST_F(UIViewControllerTest, ContainedControllersArePresentedWithTheirContainer) {
    const auto navigation = std::make_shared<UINavigationController>();
    navigation->pushViewController(middle, false);
    root->presentViewController(navigation, false, nullptr);
    EXPECT_EQ(middle->presentingViewController(), root);
    middle->dismissViewControllerAnimated(false, nullptr);
    EXPECT_EQ(root->presentedViewController(), nullptr);
}

TEST_F(UIViewControllerTest, AControllerMayDismissItselfWhenAppearing) {
    class Shy : public UIViewController {
        void viewDidAppear(bool animated) override { dismissViewControllerAnimated(animated, nullptr); }
    };
    root->presentViewController(std::make_shared<Shy>(), false, nullptr);
    EXPECT_EQ(root->presentedViewController(), nullptr);
}

TEST_F(UIViewControllerTest, ANavigationControllerShowsItsTopScreen) {
    const auto navigation = std::make_shared<UINavigationController>();
    EXPECT_EQ(navigation->topViewController(), nullptr);
    navigation->pushViewController(root, false);
    navigation->pushViewController(top, true);
    EXPECT_EQ(navigation->topViewController(), top);
    EXPECT_EQ(top->parentViewController(), navigation);
    EXPECT_EQ(navigation->viewControllers().size(), 2U);
    EXPECT_EQ(navigation->popViewControllerAnimated(true), top);
    EXPECT_EQ(top->parentViewController(), nullptr);
    EXPECT_EQ(navigation->topViewController(), root);
    EXPECT_THAT(notes,
                ElementsAre("root is there", "root glides out", "top glides in", "top glides out", "root glides in"));
}

TEST_F(UIViewControllerTest, TheBottomScreenOfAStackStays) {
    const auto navigation = std::make_shared<UINavigationController>();
    EXPECT_EQ(navigation->popViewControllerAnimated(false), nullptr);
    navigation->pushViewController(root, false);
    EXPECT_EQ(navigation->popViewControllerAnimated(false), nullptr);
    EXPECT_EQ(navigation->topViewController(), root);
}

TEST_F(UIViewControllerTest, ImpossiblePushesAreIgnored) {
    const auto navigation = std::make_shared<UINavigationController>();
    const auto inner = std::make_shared<UINavigationController>();
    const auto other = std::make_shared<UINavigationController>();
    root->presentViewController(middle, false, nullptr);
    other->pushViewController(top, false);
    navigation->pushViewController(inner, false);
    navigation->pushViewController(nullptr, false);
    navigation->pushViewController(navigation, false);
    navigation->pushViewController(inner, false);
    navigation->pushViewController(middle, false);
    navigation->pushViewController(top, false);
    inner->pushViewController(navigation, false);
    EXPECT_THAT(navigation->viewControllers(), ElementsAre(inner));
    EXPECT_THAT(inner->viewControllers(), IsEmpty());
}

TEST_F(UIViewControllerTest, AContainedControllerIsNotPresented) {
    const auto navigation = std::make_shared<UINavigationController>();
    navigation->pushViewController(middle, false);
    root->presentViewController(middle, false, nullptr);
    EXPECT_EQ(root->presentedViewController(), nullptr);
}

TEST_F(UIViewControllerTest, AWindowHoldsItsRoot) {
    const std::weak_ptr<UIViewController> seen = root;
    UIWindow window(std::move(root));
    EXPECT_FALSE(seen.expired());
    EXPECT_EQ(window.rootViewController(), seen.lock());
    window.setRootViewController(middle);
    EXPECT_TRUE(seen.expired());
    EXPECT_EQ(window.rootViewController(), middle);
}

}  // namespace

}  // namespace vorlane

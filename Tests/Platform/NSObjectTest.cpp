#include "Platform/NSObject.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Platform/UIAlertController.h"
#include "Platform/UINavigationController.h"

namespace vorlane {

class ScreenOfAHost : public UIViewController {};

template <class T>
class ScreenOf : public UIViewController {};

namespace {

class HiddenScreen : public NSObject {
public:
    class Inner : public NSObject {};
};

TEST(NSObjectTest, TheClassNameHasNoNamespace) {
    EXPECT_EQ(NSObject().className(), "NSObject");
    EXPECT_EQ(ScreenOfAHost().className(), "ScreenOfAHost");
    EXPECT_EQ(HiddenScreen().className(), "HiddenScreen");
    EXPECT_EQ(HiddenScreen::Inner().className(), "Inner");
}

TEST(NSObjectTest, TheClassNameIsThatOfTheDynamicType) {
    const ScreenOfAHost screen;
    const NSObject& object = screen;
    EXPECT_EQ(object.className(), "ScreenOfAHost");
    const UINavigationController navigation;
    EXPECT_EQ(static_cast<const UIViewController&>(navigation).className(), "UINavigationController");
}

TEST(NSObjectTest, ALocalClassHasItsOwnName) {
    class Local : public NSObject {};
    EXPECT_EQ(Local().className(), "Local");
}

TEST(NSObjectTest, ATemplateKeepsItsArguments) {
    EXPECT_EQ(ScreenOf<int>().className(), "ScreenOf<int>");
    EXPECT_EQ(ScreenOf<ScreenOfAHost>().className(), "ScreenOf<vorlane::ScreenOfAHost>");
}

TEST(NSObjectTest, ATypeHasANameWithoutAnObject) {
    EXPECT_EQ(NSStringFromClass(typeid(UIAlertController)), "UIAlertController");
    EXPECT_EQ(NSStringFromClass(typeid(int)), "int");
}

}  // namespace

}  // namespace vorlane

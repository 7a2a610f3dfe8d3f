#include "Platform/Internal/BackgroundTasks.h"

#include <gtest/gtest.h>

#include <memory>

namespace vorlane {

namespace {

TEST(BackgroundTasksTest, EndingATaskReturnsItsNameOnce) {
    BackgroundTasks tasks;
    const auto identifier = tasks.begin("task", nullptr);
    EXPECT_NE(identifier, UIBackgroundTaskInvalid);
    EXPECT_EQ(tasks.end(identifier), "task");
    EXPECT_EQ(tasks.end(identifier), std::nullopt);
    EXPECT_EQ(tasks.end(UIBackgroundTaskInvalid), std::nullopt);
}

TEST(BackgroundTasksTest, IdentifiersAreNeverReused) {
    BackgroundTasks tasks;
    const auto first = tasks.begin("first", nullptr);
    tasks.end(first);
    EXPECT_GT(tasks.begin("second", nullptr), first);
}

TEST(BackgroundTasksTest, AHandlerIsTakenOnlyOnce) {
    BackgroundTasks tasks;
    int runs = 0;
    const auto identifier = tasks.begin("task", [&runs] { ++runs; });
    const auto first = tasks.takeForExpiry(identifier);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->name, "task");
    first->expirationHandler();
    EXPECT_EQ(runs, 1);
    const auto second = tasks.takeForExpiry(identifier);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->expirationHandler, nullptr);
    EXPECT_EQ(tasks.names().size(), 1U);
    tasks.end(identifier);
    EXPECT_FALSE(tasks.takeForExpiry(identifier));
}

TEST(BackgroundTasksTest, AHandlerIsDestroyedWithoutTheLock) {
    BackgroundTasks tasks;
    std::size_t count = 99;
    auto witness = std::shared_ptr<void>(nullptr, [&](void*) { count = tasks.names().size(); });
    const auto identifier = tasks.begin("task", [held = std::move(witness)] {});
    tasks.end(identifier);
    EXPECT_EQ(count, 0U);
}

}  // namespace

}  // namespace vorlane

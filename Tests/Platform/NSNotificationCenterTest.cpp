#include "Platform/NSNotificationCenter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace vorlane {

namespace {

class NSNotificationCenterTest : public ::testing::Test {
protected:
    NSNotificationCenter::Observer noting(const std::string& who) {
        return [this, who](const NSNotification& notification) { notes.push_back(who + ":" + notification.name); };
    }

    NSNotificationCenter center;
    std::vector<std::string> notes;
};

TEST_F(NSNotificationCenterTest, ObserversRunInOrder) {
    center.addObserver("a", noting("1"));
    center.addObserver("b", noting("2"));
    center.addObserver("a", noting("3"));
    center.postNotificationName("a");
    center.postNotificationName("none");
    EXPECT_EQ(notes, (std::vector<std::string>{"1:a", "3:a"}));
}

TEST_F(NSNotificationCenterTest, ARemovedObserverNoLongerRuns) {
    const auto token = center.addObserver("a", noting("1"));
    center.removeObserver(token);
    center.removeObserver(token);
    center.removeObserver(0);
    center.postNotificationName("a");
    EXPECT_TRUE(notes.empty());
}

TEST_F(NSNotificationCenterTest, AnObserverMayRemoveItselfAndOthers) {
    NSNotificationCenter::Token first = 0;
    NSNotificationCenter::Token second = 0;
    first = center.addObserver("a", [&](const NSNotification&) {
        notes.emplace_back("first");
        center.removeObserver(first);
        center.removeObserver(second);
    });
    second = center.addObserver("a", noting("second"));
    center.postNotificationName("a");
    center.postNotificationName("a");
    EXPECT_EQ(notes, std::vector<std::string>{"first"});
}

TEST_F(NSNotificationCenterTest, AnObserverMayPostAndAdd) {
    center.addObserver("a", [&](const NSNotification&) {
        center.addObserver("b", noting("added"));
        center.postNotificationName("b");
    });
    center.postNotificationName("a");
    EXPECT_EQ(notes, std::vector<std::string>{"added:b"});
}

TEST_F(NSNotificationCenterTest, DestroyingAnObserverMayUseTheCenter) {
    struct Leaving {
        explicit Leaving(NSNotificationCenter& left) : center(left) {}
        Leaving(const Leaving&) = delete;
        Leaving& operator=(const Leaving&) = delete;
        ~Leaving() { center.postNotificationName("left"); }
        NSNotificationCenter& center;
    };
    center.addObserver("left", noting("told"));
    const auto token = center.addObserver("a", [leaving = std::make_shared<Leaving>(center)](const NSNotification&) {});
    center.removeObserver(token);
    EXPECT_EQ(notes, std::vector<std::string>{"told:left"});
}

TEST_F(NSNotificationCenterTest, AnEmptyObserverIsIgnored) {
    center.addObserver("a", nullptr);
    EXPECT_NO_THROW(center.postNotificationName("a"));
}

TEST_F(NSNotificationCenterTest, ThreadsMayPostAddAndRemoveConcurrently) {
    std::atomic<int> told = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 100; ++round) {
                const auto token = center.addObserver("a", [&told](const NSNotification&) { ++told; });
                center.postNotificationName("a");
                center.removeObserver(token);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_GE(told, 400);
}

}  // namespace

}  // namespace vorlane

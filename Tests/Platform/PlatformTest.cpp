#include "Platform/Platform.h"

#include <gtest/gtest.h>

#include <thread>

#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/ProcessWide.h"
#include "Simulator/Platform/SimulatedPhone.h"

namespace vorlane {

namespace {

struct Counted {
    static inline int made = 0;
    static inline int gone = 0;
    Counted() { ++made; }
    ~Counted() { ++gone; }
};

constinit ProcessWide<Counted> counted;

class PlatformTest : public ::testing::Test {
protected:
    ~PlatformTest() override { Platform::install(nullptr); }
};

TEST_F(PlatformTest, AnInstalledPlatformIsTheCurrentOne) {
    const auto phone = std::make_shared<SimulatedPhone>();
    Platform::install(phone);
    EXPECT_EQ(&Platform::current(), phone.get());
    Platform::shutdown();
}

TEST_F(PlatformTest, WithoutOneTheLinuxPlatformIsMade) {
    EXPECT_TRUE(dynamic_cast<LinuxPlatform*>(&Platform::current()));
    EXPECT_EQ(&Platform::current(), &Platform::current());
    EXPECT_EQ(Platform::current().systemVersion(), 12.0);
    Platform::shutdown();
}

TEST_F(PlatformTest, ShuttingDownWithoutAPlatformOrTwiceIsFine) {
    Platform::shutdown();
    Platform::install(std::make_shared<SimulatedPhone>());
    Platform::shutdown();
    Platform::shutdown();
}

TEST_F(PlatformTest, TheMainQueueIsThatOfThePlatform) {
    const auto phone = std::make_shared<SimulatedPhone>();
    Platform::install(phone);
    bool hasRun = false;
    onMainQueue([&hasRun] { hasRun = true; });
    EXPECT_FALSE(hasRun);
    phone->runMainQueue();
    EXPECT_TRUE(hasRun);
    Platform::shutdown();
}

TEST_F(PlatformTest, AProcessWideObjectIsMadeOnceAndDroppedWithThePlatform) {
    Platform::install(nullptr);
    const int made = Counted::made;
    const int gone = Counted::gone;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back([] { counted.get(); });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(Counted::made, made + 1);
    EXPECT_EQ(&counted.get(), &counted.get());
    Platform::install(nullptr);
    EXPECT_EQ(Counted::gone, gone + 1);
    counted.get();
    EXPECT_EQ(Counted::made, made + 2);
}

}  // namespace

}  // namespace vorlane

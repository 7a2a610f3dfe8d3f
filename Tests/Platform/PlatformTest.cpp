#include "Platform/Platform.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

#include "Platform/Internal/ProcessWide.h"
#include "Platform/Linux/LinuxPlatform.h"
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

TEST_F(PlatformTest, InstalledPlatformIsCurrent) {
    const auto phone = std::make_shared<SimulatedPhone>();
    Platform::install(phone);
    EXPECT_EQ(&Platform::current(), phone.get());
    Platform::shutdown();
}

TEST_F(PlatformTest, LinuxPlatformIsTheDefault) {
    EXPECT_TRUE(dynamic_cast<LinuxPlatform*>(&Platform::current()));
    EXPECT_EQ(&Platform::current(), &Platform::current());
    EXPECT_EQ(Platform::current().systemVersion(), 12.0);
    Platform::shutdown();
}

TEST_F(PlatformTest, ShutdownNeedsNoPlatformAndMayRepeat) {
    Platform::shutdown();
    Platform::install(std::make_shared<SimulatedPhone>());
    Platform::shutdown();
    Platform::shutdown();
}

class StopCounter : public SimulatedPhone {
public:
    int stops = 0;

protected:
    void stop() override {
        ++stops;
        SimulatedPhone::stop();
        // Tasks that run while the platform stops may still use it.
        EXPECT_EQ(&Platform::current(), this);
    }
};

TEST_F(PlatformTest, InstallingStopsThePreviousPlatform) {
    const auto phone = std::make_shared<StopCounter>();
    Platform::install(phone);
    Platform::install(std::make_shared<SimulatedPhone>());
    EXPECT_EQ(phone->stops, 1);
    Platform::shutdown();
}

TEST_F(PlatformTest, ReinstallingHasNoEffect) {
    const auto phone = std::make_shared<StopCounter>();
    Platform::install(phone);
    const auto* object = &counted.get();
    const int gone = Counted::gone;
    Platform::install(phone);
    EXPECT_EQ(phone->stops, 0);
    EXPECT_EQ(&counted.get(), object);
    EXPECT_EQ(Counted::gone, gone);
    Platform::shutdown();
    EXPECT_EQ(phone->stops, 1);
}

TEST_F(PlatformTest, EachPlatformIsStoppedOnce) {
    for (int i = 0; i < 2; ++i) {
        const auto phone = std::make_shared<StopCounter>();
        Platform::install(phone);
        EXPECT_EQ(phone->stops, 0);
        Platform::shutdown();
        Platform::shutdown();
        EXPECT_EQ(phone->stops, 1);
    }
}

TEST_F(PlatformTest, ManyThreadsMakeOneDefaultPlatform) {
    Platform::install(nullptr);
    std::array<Platform*, 4> seen{};
    std::vector<std::thread> threads;
    for (auto& platform : seen) threads.emplace_back([&platform] { platform = &Platform::current(); });
    for (auto& thread : threads) thread.join();
    for (const auto* platform : seen) EXPECT_EQ(platform, &Platform::current());
    Platform::shutdown();
}

TEST_F(PlatformTest, InstallingReleasesThePreviousPlatform) {
    auto phone = std::make_shared<SimulatedPhone>();
    const std::weak_ptr<Platform> seen = phone;
    Platform::install(std::move(phone));
    EXPECT_FALSE(seen.expired());
    Platform::install(nullptr);
    EXPECT_TRUE(seen.expired());
}

TEST_F(PlatformTest, ProcessWideObjectsAreResetNewestFirst) {
    static std::vector<int> gone;
    gone.clear();
    struct Noting {
        explicit Noting(int given) : number(given) {}
        ~Noting() { gone.push_back(number); }
        int number;
    };
    static constinit ProcessWide<Noting> older;
    static constinit ProcessWide<Noting> newer;
    older.get([] { return std::make_unique<Noting>(1); });
    newer.get([] { return std::make_unique<Noting>(2); });
    older.get([] { return std::make_unique<Noting>(3); });
    Platform::install(nullptr);
    EXPECT_EQ(gone, (std::vector<int>{2, 1}));
    Platform::install(nullptr);
    EXPECT_EQ(gone.size(), 2U);
}

TEST_F(PlatformTest, MainQueueIsThePlatforms) {
    const auto phone = std::make_shared<SimulatedPhone>();
    Platform::install(phone);
    bool hasRun = false;
    onMainQueue([&hasRun] { hasRun = true; });
    EXPECT_FALSE(hasRun);
    phone->runMainQueue();
    EXPECT_TRUE(hasRun);
    Platform::shutdown();
}

TEST_F(PlatformTest, ProcessWideObjectIsMadeOncePerPlatform) {
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

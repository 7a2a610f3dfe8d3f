#include "Network/VLRequestCounter.h"

#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {
namespace {

class VLRequestCounterTest : public SimulatedPhoneTest {};

TEST_F(VLRequestCounterTest, RequestIdsWrapFrom9999To1) {
    for (int round = 0; round < 2; ++round)
        for (std::uint32_t expected = 1; expected <= 9999; ++expected)
            ASSERT_EQ(VLRequestCounter::incrementAndGetCounter(), expected);
}

TEST_F(VLRequestCounterTest, ConcurrentThreadsReceiveDistinctIds) {
    constexpr int kThreads = 8;
    constexpr int kNumbersEach = 2500;
    std::mutex mutex;
    std::map<std::uint32_t, int> handedOut;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&] {
            std::vector<std::uint32_t> numbers;
            for (int i = 0; i < kNumbersEach; ++i) numbers.push_back(VLRequestCounter::incrementAndGetCounter());
            const std::lock_guard lock(mutex);
            for (const std::uint32_t number : numbers) ++handedOut[number];
        });
    for (std::thread& thread : threads) thread.join();

    // 20,000 ids: the range twice, and 2 more.
    std::map<std::uint32_t, int> expected;
    for (std::uint32_t number = 1; number <= 9999; ++number) expected[number] = number <= 2 ? 3 : 2;
    EXPECT_EQ(handedOut, expected);
}

TEST_F(VLRequestCounterTest, AnotherPlatformRestartsTheIds) {
    EXPECT_EQ(VLRequestCounter::incrementAndGetCounter(), 1u);
    EXPECT_EQ(VLRequestCounter::incrementAndGetCounter(), 2u);
    Platform::install(std::make_shared<SimulatedPhone>());
    EXPECT_EQ(VLRequestCounter::incrementAndGetCounter(), 1u);
}

}  // namespace
}  // namespace vorlane

#include "Platform/Internal/CallOutScope.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace vorlane {
namespace {

TEST(CallOutScopeTest, CallsAtOnceOutsideAScope) {
    int calls = 0;
    CallOutScope::callAfterwards([&calls] { ++calls; });
    EXPECT_EQ(calls, 1);
}

TEST(CallOutScopeTest, CallsInOrderAtTheEndOfTheOutermostScope) {
    std::vector<int> calls;
    {
        const CallOutScope outer;
        CallOutScope::callAfterwards([&calls] { calls.push_back(1); });
        {
            const CallOutScope inner;
            CallOutScope::callAfterwards([&calls] { calls.push_back(2); });
        }
        EXPECT_TRUE(calls.empty());
    }
    EXPECT_EQ(calls, (std::vector<int>{1, 2}));
}

TEST(CallOutScopeTest, ConcernsItsOwnThreadOnly) {
    const CallOutScope scope;
    int calls = 0;
    std::thread([&calls] { CallOutScope::callAfterwards([&calls] { ++calls; }); }).join();
    EXPECT_EQ(calls, 1);
}

TEST(CallOutScopeTest, CallMayOpenAScopeOfItsOwn) {
    std::vector<int> calls;
    {
        const CallOutScope scope;
        CallOutScope::callAfterwards([&calls] {
            const CallOutScope nested;
            CallOutScope::callAfterwards([&calls] { calls.push_back(2); });
            calls.push_back(1);
        });
    }
    EXPECT_EQ(calls, (std::vector<int>{1, 2}));
}

}  // namespace
}  // namespace vorlane

#include <gtest/gtest.h>

#include <chrono>

#include "Platform/Linux/Curl/CurlResolver.h"

namespace vorlane {

namespace {

/// Joins the look-up threads that tests of sessions without a platform leave behind: the last one that ended is joined
/// by the next look-up only.
class ResolverEnvironment : public ::testing::Environment {
    void TearDown() override {
        CurlResolver::shared().waitUntilIdle(std::chrono::steady_clock::now() + std::chrono::seconds(10));
    }
};

const auto* const kResolverEnvironment = ::testing::AddGlobalTestEnvironment(new ResolverEnvironment);

}  // namespace

}  // namespace vorlane

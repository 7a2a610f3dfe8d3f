#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Tests/Fuzz/FuzzTarget.h"

namespace vorlane::fuzz {

namespace {

std::vector<std::filesystem::path> inputsOf(const std::string& target) {
    std::vector<std::filesystem::path> inputs;
    for (const auto* kind : {"Seeds", "Regressions"}) {
        const auto folder = std::filesystem::path(VORLANE_FUZZ_INPUTS) / kind / target;
        if (!std::filesystem::exists(folder)) continue;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) inputs.push_back(entry.path());
    }
    std::ranges::sort(inputs);
    return inputs;
}

std::string contentsOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class FuzzSeedsTest : public ::testing::TestWithParam<FuzzTarget> {};

/// The seeds of the fuzzer, and every input that once broke a promise.
TEST_P(FuzzSeedsTest, KeepsItsPromises) {
    const auto inputs = inputsOf(GetParam().name);
    ASSERT_FALSE(inputs.empty());
    for (const auto& input : inputs) {
        SCOPED_TRACE(input);
        GetParam().run(contentsOf(input));
    }
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzSeedsTest, ::testing::ValuesIn(allTargets()), [](const auto& information) {
    std::string name = information.param.name;
    std::erase(name, '-');
    return name;
});

}  // namespace

}  // namespace vorlane::fuzz

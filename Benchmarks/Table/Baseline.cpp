#include "Benchmarks/Table/Baseline.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace vorlane::benchmarks {

namespace {

using Values = std::vector<double>;

constexpr double kLeastNoise = 0.1;

double spread(const Values& values) {
    const auto [least, most] = std::ranges::minmax(values);
    return least > 0 ? most / least - 1 : 0;
}

bool reportIfWorse(const std::string& name, const Values& before, const Values& now) {
    const auto noise = std::max({kLeastNoise, spread(before), spread(now)});
    const auto least = std::ranges::min(before);
    const auto ratio = least > 0 ? std::ranges::min(now) / least : 1;
    if (ratio <= 1 + noise) return false;
    fmt::print("worse: {} {:.4g} -> {:.4g} ({:.2f} times, noise {:.0f} %)\n", name, least, std::ranges::min(now), ratio,
               noise * 100);
    return true;
}

}  // namespace

void recordBaseline(const Results& results, const std::string& path) {
    std::ofstream file(path);
    file << nlohmann::json(results.values()).dump(1) << "\n";
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

int printRegressions(const Results& results, const std::string& path) {
    std::ifstream file(path);
    const auto baseline = nlohmann::json::parse(file).get<std::map<std::string, Values>>();
    int worse = 0;
    for (const auto& [name, values] : results.values()) {
        const auto before = baseline.find(name);
        if (before != baseline.end() && reportIfWorse(name, before->second, values)) ++worse;
    }
    fmt::print("{} of {} values are worse than in {}\n", worse, results.values().size(), path);
    return worse;
}

}  // namespace vorlane::benchmarks

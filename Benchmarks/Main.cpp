#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "Benchmarks/Roles.h"
#include "Benchmarks/Table/Baseline.h"
#include "Benchmarks/Table/Table.h"

namespace {

/// Removes `option` and its value from the arguments, and returns the value, or an empty string.
std::string takeOption(int& count, char** arguments, std::string_view option) {
    for (int i = 1; i + 1 < count; ++i) {
        if (arguments[i] != option) continue;
        const std::string value = arguments[i + 1];
        for (count -= 2; i < count; ++i) arguments[i] = arguments[i + 2];
        return value;
    }
    return "";
}

int run(int count, char** arguments) {
    using namespace vorlane::benchmarks;
    if (const auto role = takeOption(count, arguments, "--role"); !role.empty()) {
        std::printf("%.9g\n", figureOfRole(role));
        return 0;
    }
    const auto record = takeOption(count, arguments, "--record");
    const auto against = takeOption(count, arguments, "--against");
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 2;
    Results results;
    benchmark::RunSpecifiedBenchmarks(&results);
    printTable(results);
    if (!record.empty()) recordBaseline(results, record);
    return against.empty() || printRegressions(results, against) == 0 ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
    try {
        return run(count, arguments);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "vorlane-benchmarks: %s\n", failure.what());
        return 2;
    }
}

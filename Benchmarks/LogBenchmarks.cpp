#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <string>

#include "Public/VLLog.h"

namespace vorlane::benchmarks {

namespace {

std::string text(int number) {
    return fmt::format("RQST{:04} {} {}", number, "POST", "https://events.vorlane.example/0.8/register_app_event");
}

void BuildLogText(benchmark::State& state) {
    int number = 0;
    for (auto _ : state) benchmark::DoNotOptimize(text(++number % 10000));
}
BENCHMARK(BuildLogText)->Iterations(1000000)->Repetitions(9);

void LogBelowThreshold(benchmark::State& state) {
    int number = 0;
    for (auto _ : state) logMessage(VLLogLevel::Debug, text(++number % 10000));
}
BENCHMARK(LogBelowThreshold)->Iterations(1000000)->Repetitions(9);

}  // namespace

}  // namespace vorlane::benchmarks

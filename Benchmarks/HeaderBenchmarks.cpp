// What it costs a host to include the library's header.

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

#include "Benchmarks/Support/Process.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane::benchmarks {

namespace {

void run(const std::string& command) {
    if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
}

void compile(benchmark::State& state, const std::string& line) {
    const TemporaryFolder folder;
    std::ofstream(folder.path("program.cpp")) << line << "\nint main() {}\n";
    const auto compiler =
        fmt::format("{} -std=c++20 -I{} {}", VORLANE_COMPILER, VORLANE_HEADERS, folder.path("program.cpp"));
    run(fmt::format("{} -E | wc -l >{}", compiler, folder.path("lines")));
    double lines = 0;
    std::ifstream(folder.path("lines")) >> lines;
    for (auto _ : state) {
        state.SetIterationTime(secondsOf([&] { run(fmt::format("{} -c -o {}", compiler, folder.path("o"))); }));
    }
    state.counters["lines"] = lines;
}

void CompileHeader(benchmark::State& state) { compile(state, "#include <vorlane/Vorlane.h>"); }
BENCHMARK(CompileHeader)->Iterations(1)->Repetitions(5)->UseManualTime();

void CompileEmpty(benchmark::State& state) { compile(state, ""); }
BENCHMARK(CompileEmpty)->Iterations(1)->Repetitions(5)->UseManualTime();

}  // namespace

}  // namespace vorlane::benchmarks

// What can only be measured in a process that does nothing else: each iteration is a fresh one.

#include <benchmark/benchmark.h>

#include <string>

#include "Benchmarks/Support/Process.h"

namespace vorlane::benchmarks {

namespace {

void measureRole(benchmark::State& state, const std::string& program, const std::string& role) {
    for (auto _ : state) state.SetIterationTime(figureOf(program, {"--role", role}));
}

void StartUp(benchmark::State& state) { measureRole(state, thisProgram(), "start-up"); }
void BareStartUp(benchmark::State& state) { measureRole(state, thisProgram(), "bare-start-up"); }
void ShutdownIdle(benchmark::State& state) { measureRole(state, thisProgram(), "shutdown-idle"); }
void ShutdownBusy(benchmark::State& state) { measureRole(state, thisProgram(), "shutdown-busy"); }
void SessionStart(benchmark::State& state) { measureRole(state, thisProgram(), "session-start"); }
void SessionStartWithoutLogging(benchmark::State& state) {
    measureRole(state, thisProgram() + "-without-logging", "session-start");
}

BENCHMARK(StartUp)->Iterations(15)->UseManualTime();
BENCHMARK(BareStartUp)->Iterations(15)->UseManualTime();
BENCHMARK(ShutdownIdle)->Iterations(5)->UseManualTime();
BENCHMARK(ShutdownBusy)->Iterations(5)->UseManualTime();
BENCHMARK(SessionStart)->Iterations(3)->UseManualTime();
BENCHMARK(SessionStartWithoutLogging)->Iterations(3)->UseManualTime();

void figure(benchmark::State& state, const std::string& role) {
    double value = 0;
    for (auto _ : state) value = figureOf(thisProgram(), {"--role", role});
    state.counters["figure"] = value;
}

void MemoryAfterStartUp(benchmark::State& state) { figure(state, "memory-after-start-up"); }
void BareMemory(benchmark::State& state) { figure(state, "bare-memory"); }
void MemoryAfterEvents(benchmark::State& state) { figure(state, "memory-after-events"); }
void Threads(benchmark::State& state) { figure(state, "threads"); }

BENCHMARK(MemoryAfterStartUp)->Iterations(1);
BENCHMARK(BareMemory)->Iterations(1);
BENCHMARK(MemoryAfterEvents)->Iterations(1);
BENCHMARK(Threads)->Iterations(1);

}  // namespace

}  // namespace vorlane::benchmarks

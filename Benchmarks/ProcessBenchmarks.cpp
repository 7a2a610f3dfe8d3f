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

void InboxList(benchmark::State& state) { measureRole(state, thisProgram(), "inbox-list"); }
void BareInboxList(benchmark::State& state) { measureRole(state, thisProgram(), "bare-inbox-list"); }
void InboxListRequest(benchmark::State& state) { measureRole(state, thisProgram(), "inbox-list-request"); }
void InboxMainThread(benchmark::State& state) { measureRole(state, thisProgram(), "inbox-main-thread"); }
void InboxSynchronisation(benchmark::State& state) { measureRole(state, thisProgram(), "inbox-synchronisation"); }
void BareInboxSynchronisation(benchmark::State& state) {
    measureRole(state, thisProgram(), "bare-inbox-synchronisation");
}

BENCHMARK(StartUp)->Iterations(15)->UseManualTime();
BENCHMARK(BareStartUp)->Iterations(15)->UseManualTime();
BENCHMARK(ShutdownIdle)->Iterations(5)->UseManualTime();
BENCHMARK(ShutdownBusy)->Iterations(5)->UseManualTime();
BENCHMARK(SessionStart)->Iterations(3)->UseManualTime();
BENCHMARK(SessionStartWithoutLogging)->Iterations(3)->UseManualTime();

BENCHMARK(InboxList)->Iterations(5)->UseManualTime();
BENCHMARK(BareInboxList)->Iterations(5)->UseManualTime();
BENCHMARK(InboxListRequest)->Iterations(5)->UseManualTime();
BENCHMARK(InboxMainThread)->Iterations(9)->UseManualTime();
BENCHMARK(InboxSynchronisation)->Iterations(9)->UseManualTime();
BENCHMARK(BareInboxSynchronisation)->Iterations(9)->UseManualTime();

void figure(benchmark::State& state, const std::string& role) {
    double value = 0;
    for (auto _ : state) value = figureOf(thisProgram(), {"--role", role});
    state.counters["figure"] = value;
}

void MemoryAfterStartUp(benchmark::State& state) { figure(state, "memory-after-start-up"); }
void BareMemory(benchmark::State& state) { figure(state, "bare-memory"); }
void MemoryAfterEvents(benchmark::State& state) { figure(state, "memory-after-events"); }
void OwnMemoryAfterStartUp(benchmark::State& state) { figure(state, "own-memory-after-start-up"); }
void OwnMemoryAfterEvents(benchmark::State& state) { figure(state, "own-memory-after-events"); }
void InboxListMemory(benchmark::State& state) { figure(state, "inbox-list-memory"); }
void Threads(benchmark::State& state) { figure(state, "threads"); }

BENCHMARK(MemoryAfterStartUp)->Iterations(1);
BENCHMARK(BareMemory)->Iterations(1);
BENCHMARK(MemoryAfterEvents)->Iterations(1);
BENCHMARK(OwnMemoryAfterStartUp)->Iterations(1);
BENCHMARK(OwnMemoryAfterEvents)->Iterations(1);
BENCHMARK(InboxListMemory)->Iterations(1);
BENCHMARK(Threads)->Iterations(1);

}  // namespace

}  // namespace vorlane::benchmarks

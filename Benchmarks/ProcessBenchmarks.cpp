// Measurements that need a process of their own. Each iteration starts one.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Benchmarks/Support/Process.h"

namespace vorlane::benchmarks {

namespace {

/// Loads the library that makes each flush take 20 ms.
const std::vector<std::string> kSlowDisk{std::string("LD_PRELOAD=") + VORLANE_SLOW_DISK};

void measureRole(benchmark::State& state, const std::string& program, const std::string& role) {
    for (auto _ : state) state.SetIterationTime(figureOf(program, {"--role", role}));
}

void measureSlowly(benchmark::State& state, const std::string& role) {
    for (auto _ : state) state.SetIterationTime(figureOf(thisProgram(), {"--role", role}, kSlowDisk));
}

/// From the call that starts a program until its main().
void measureStart(benchmark::State& state, const std::string& program) {
    for (auto _ : state) {
        const auto start = monotonicTime();
        state.SetIterationTime(figureOf(program, {}) - start);
    }
}

void ProgramStart(benchmark::State& state) { measureStart(state, VORLANE_START_VORLANE); }
void BareProgramStart(benchmark::State& state) { measureStart(state, VORLANE_START_BARE); }

BENCHMARK(ProgramStart)->Iterations(30)->Repetitions(3)->UseManualTime();
BENCHMARK(BareProgramStart)->Iterations(30)->Repetitions(3)->UseManualTime();

void StartUp(benchmark::State& state) { measureRole(state, thisProgram(), "start-up"); }
void StartUpSlowDisk(benchmark::State& state) { measureSlowly(state, "start-up"); }
void FreshStartUp(benchmark::State& state) { measureRole(state, thisProgram(), "fresh-start-up"); }
void FreshStartUpSlowDisk(benchmark::State& state) { measureSlowly(state, "fresh-start-up"); }
void BecomeActive(benchmark::State& state) { measureRole(state, thisProgram(), "become-active"); }
void BecomeActiveSlowDisk(benchmark::State& state) { measureSlowly(state, "become-active"); }
void SetTrackingId(benchmark::State& state) { measureRole(state, thisProgram(), "set-tracking-id"); }
void SetTrackingIdSlowDisk(benchmark::State& state) { measureSlowly(state, "set-tracking-id"); }
void EnterBackground(benchmark::State& state) { measureRole(state, thisProgram(), "enter-background"); }
void EnterBackgroundSlowDisk(benchmark::State& state) { measureSlowly(state, "enter-background"); }
void BareStartUp(benchmark::State& state) { measureRole(state, thisProgram(), "bare-start-up"); }
void ShutdownIdle(benchmark::State& state) { measureRole(state, thisProgram(), "shutdown-idle"); }
void ShutdownBusy(benchmark::State& state) { measureRole(state, thisProgram(), "shutdown-busy"); }
void SessionStart(benchmark::State& state) { measureRole(state, thisProgram(), "session-start"); }
void SessionStartWithoutLogging(benchmark::State& state) {
    const auto program = thisProgram() + "-without-logging";
    if (!std::filesystem::exists(program)) return state.SkipWithError("build vorlane-benchmarks-without-logging first");
    measureRole(state, program, "session-start");
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
BENCHMARK(StartUpSlowDisk)->Iterations(15)->UseManualTime();
BENCHMARK(FreshStartUp)->Iterations(15)->UseManualTime();
BENCHMARK(FreshStartUpSlowDisk)->Iterations(15)->UseManualTime();
BENCHMARK(BecomeActive)->Iterations(15)->UseManualTime();
BENCHMARK(BecomeActiveSlowDisk)->Iterations(15)->UseManualTime();
BENCHMARK(SetTrackingId)->Iterations(15)->UseManualTime();
BENCHMARK(SetTrackingIdSlowDisk)->Iterations(15)->UseManualTime();
BENCHMARK(EnterBackground)->Iterations(15)->UseManualTime();
BENCHMARK(EnterBackgroundSlowDisk)->Iterations(15)->UseManualTime();
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
void PeakMemory(benchmark::State& state) { figure(state, "peak-memory"); }
void MemoryAfterEvents(benchmark::State& state) { figure(state, "memory-after-events"); }
void OwnMemoryAfterStartUp(benchmark::State& state) { figure(state, "own-memory-after-start-up"); }
void OwnMemoryAfterEvents(benchmark::State& state) { figure(state, "own-memory-after-events"); }
void InboxListMemory(benchmark::State& state) { figure(state, "inbox-list-memory"); }
void Threads(benchmark::State& state) { figure(state, "threads"); }

BENCHMARK(MemoryAfterStartUp)->Iterations(1);
BENCHMARK(BareMemory)->Iterations(1);
BENCHMARK(PeakMemory)->Iterations(1);
BENCHMARK(MemoryAfterEvents)->Iterations(1);
BENCHMARK(OwnMemoryAfterStartUp)->Iterations(1);
BENCHMARK(OwnMemoryAfterEvents)->Iterations(1);
BENCHMARK(InboxListMemory)->Iterations(1);
BENCHMARK(Threads)->Iterations(1);

}  // namespace

}  // namespace vorlane::benchmarks

#include <fmt/format.h>

#include "Benchmarks/Table/Rows.h"

namespace vorlane::benchmarks {

namespace {

/// The time that a step takes longer when each flush takes 20 ms.
Row slowDiskRow(const Results& results, const std::string& what, const std::string& name) {
    const auto fast = results.seconds(name);
    const auto slow = results.seconds(name + "SlowDisk");
    return {.what = what + ", each flush 20 ms",
            .measured = milliseconds(slow),
            .bare = milliseconds(fast) + " instant flushes",
            .figure = (slow - fast) * 1e3,
            .unit = "ms more",
            .target = 0.2};
}

}  // namespace

std::vector<Row> startUpRows(const Results& results) {
    const auto startUp = results.seconds("StartUp");
    const auto bareStartUp = results.seconds("BareStartUp");
    const auto program = results.seconds("ProgramStart");
    const auto bareProgram = results.seconds("BareProgramStart");
    const auto idle = results.seconds("ShutdownIdle");
    const auto busy = results.seconds("ShutdownBusy");
    return {
        {.what = "start-up on the caller, existing folder",
         .measured = milliseconds(startUp),
         .figure = startUp * 1e3,
         .unit = "ms",
         .target = 0.8},
        {.what = "the same, beside libcurl and two unflushed writes",
         .measured = milliseconds(startUp),
         .bare = milliseconds(bareStartUp) + " libcurl, two writes",
         .figure = startUp / bareStartUp,
         .unit = "times",
         .target = 1.5},
        {.what = "program start, from exec to main",
         .measured = milliseconds(program),
         .bare = milliseconds(bareProgram) + " linked with libcurl and SQLite",
         .figure = program / bareProgram,
         .unit = "times",
         .target = 1.15},
        {.what = "shutdown without requests",
         .measured = milliseconds(idle),
         .figure = idle * 1e3,
         .unit = "ms",
         .target = 2},
        {.what = "shutdown with 100 requests to a silent server",
         .measured = milliseconds(busy),
         .figure = busy * 1e3,
         .unit = "ms",
         .target = 100},
    };
}

std::vector<Row> slowDiskRows(const Results& results) {
    return {slowDiskRow(results, "start-up, existing folder", "StartUp"),
            slowDiskRow(results, "start-up, fresh folder", "FreshStartUp"),
            slowDiskRow(results, "first didBecomeActive", "BecomeActive"),
            slowDiskRow(results, "setTrackingId", "SetTrackingId"),
            slowDiskRow(results, "didEnterBackground", "EnterBackground")};
}

std::vector<Row> storeRows(const Results& results) {
    const auto change = results.seconds("ChangeSetting");
    const auto bare = results.seconds("BareFileWrite");
    return {{.what = "one settings change",
             .measured = microseconds(change),
             .bare = microseconds(bare) + " write and rename",
             .figure = change / bare,
             .unit = "times"}};
}

}  // namespace vorlane::benchmarks

#include <fmt/format.h>

#include "Benchmarks/Table/Rows.h"

namespace vorlane::benchmarks {

std::vector<Row> logRows(const Results& results) {
    const auto text = results.seconds("BuildLogText");
    const auto line = results.seconds("LogBelowThreshold") - text;
    const auto session = results.seconds("SessionStart");
    const auto silentSession = results.seconds("SessionStartWithoutLogging");
    return {
        {.what = "a log line below the threshold, without its text",
         .measured = fmt::format("{:.1f} ns", line * 1e9),
         .bare = fmt::format("{:.1f} ns text", text * 1e9),
         .figure = line * 1e9,
         .unit = "ns",
         .target = 20},
        {.what = "a session start",
         .measured = microseconds(session),
         .bare = microseconds(silentSession) + " logging compiled out",
         .figure = session / silentSession,
         .unit = "times",
         .target = 3},
    };
}

}  // namespace vorlane::benchmarks

#include <fmt/format.h>

#include <filesystem>

#include "Benchmarks/Table/Rows.h"

namespace vorlane::benchmarks {

namespace {

Row memoryRow(const Results& results, const std::string& what, const std::string& name, double target) {
    const auto bytes = results.counter(name + ".figure");
    return {.what = what, .measured = megabytes(bytes), .figure = bytes / 1e6, .unit = "MB", .target = target};
}

double sizeOfStrippedLibrary() { return static_cast<double>(std::filesystem::file_size(VORLANE_STRIPPED_LIBRARY)); }

}  // namespace

std::vector<Row> memoryRows(const Results& results) {
    auto afterStartUp = memoryRow(results, "resident memory after start-up", "MemoryAfterStartUp", 3.8);
    afterStartUp.bare = megabytes(results.counter("BareMemory.figure")) + " one request by libcurl";
    const auto threads = results.counter("Threads.figure");
    const auto size = sizeOfStrippedLibrary();
    return {
        afterStartUp,
        memoryRow(results, "resident memory after 5,000 events", "MemoryAfterEvents", 0),
        memoryRow(results, "its peak meanwhile", "PeakMemory", 7),
        memoryRow(results, "without the code of libraries: after start-up", "OwnMemoryAfterStartUp", 0),
        memoryRow(results, "without the code of libraries: after 5,000 events", "OwnMemoryAfterEvents", 0),
        {.what = "threads",
         .measured = fmt::format("{:.0f}", threads),
         .figure = threads,
         .unit = "threads",
         .target = 4},
        {.what = "shared library, stripped",
         .measured = megabytes(size),
         .figure = size / 1e6,
         .unit = "MB",
         .target = 1.5},
    };
}

}  // namespace vorlane::benchmarks

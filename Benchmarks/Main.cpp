#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Benchmarks/Roles.h"

namespace vorlane::benchmarks {

namespace {

/// Keeps every result by the name of its benchmark, the fastest of several repetitions, and prints them as usual.
class KeepingReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& run : runs) {
            const auto& arguments = run.run_name.args;
            const auto name = run.run_name.function_name + (arguments.empty() ? "" : "/" + arguments);
            if (run.run_type == Run::RT_Aggregate || run.error_occurred) continue;
            const auto iterations = static_cast<double>(run.iterations);
            const bool isManual = run.run_name.time_type == "manual_time" || run.run_name.time_type == "real_time";
            const double seconds = (isManual ? run.real_accumulated_time : run.cpu_accumulated_time) / iterations;
            const auto [entry, isFirst] = seconds_.emplace(name, seconds);
            if (!isFirst) entry->second = std::min(entry->second, seconds);
            for (const auto& [counter, value] : run.counters) counters_[name + "." + counter] = value.value;
        }
        ConsoleReporter::ReportRuns(runs);
    }

    double seconds(const std::string& name) const { return seconds_.at(name); }
    double counter(const std::string& name) const { return counters_.at(name); }

private:
    std::map<std::string, double> seconds_;
    std::map<std::string, double> counters_;
};

struct Row {
    std::string what;
    std::string measured;
    std::string bare;
    double figure;
    double target;
    std::string unit;
    bool isAtLeast = false;
};

std::string microseconds(double seconds) { return fmt::format("{:.2f} µs", seconds * 1e6); }
std::string milliseconds(double seconds) { return fmt::format("{:.2f} ms", seconds * 1e3); }
std::string megabytes(double bytes) { return fmt::format("{:.2f} MB", bytes / 1e6); }

/// How many times as long ten times as many take when the time grows with n log n.
double nLogN(double count) { return 10 * std::log(10 * count) / std::log(count); }

std::vector<Row> rowsOf(const KeepingReporter& results, double librarySize) {
    const auto s = [&results](const char* name) { return results.seconds(name); };
    const auto c = [&results](const char* name) { return results.counter(name); };
    const auto growth = [&results](const std::string& name, const char* from, const char* to) {
        return results.seconds(name + to) / results.seconds(name + from);
    };
    const auto logLine = s("LogBelowThreshold") - s("BuildLogText");
    return {
        {"record one event with five keys, mean", microseconds(s("RecordEvent")),
         microseconds(s("BareBuildAndDump")) + " build and dump", s("RecordEvent") / s("BareBuildAndDump"), 4, "times"},
        {"the same, 99th percentile", microseconds(c("RecordEvent.p99")), "", c("RecordEvent.p99") * 1e6, 0, "µs"},
        {"5,000 events, one request each: rate", fmt::format("{:.0f}/s", 5000 / s("SendEvents")),
         fmt::format("{:.0f}/s libcurl", 5000 / s("BareSendEvents")), s("BareSendEvents") / s("SendEvents"), 0.8,
         "times", true},
        {"the same: processor time per event", microseconds(c("SendEvents.cpu") / 15000),
         microseconds(c("BareSendEvents.cpu") / 15000) + " libcurl", c("SendEvents.cpu") / c("BareSendEvents.cpu"), 2,
         "times"},
        {"facade and start-up, beside its file writes", milliseconds(s("StartUp")),
         milliseconds(s("BareStartUp")) + " two writes", (s("StartUp") - s("BareStartUp")) * 1e3, 0.3, "ms more"},
        {"one settings change", microseconds(s("ChangeSetting")),
         microseconds(s("BareFileWrite")) + " write, flush, rename", s("ChangeSetting") / s("BareFileWrite"), 1.3,
         "times"},
        {"shutdown with nothing under way", milliseconds(s("ShutdownIdle")), "", s("ShutdownIdle") * 1e3, 2, "ms"},
        {"shutdown with 100 requests to a silent server", milliseconds(s("ShutdownBusy")), "", s("ShutdownBusy") * 1e3,
         100, "ms"},
        {"resident memory after start-up", megabytes(c("MemoryAfterStartUp.figure")),
         megabytes(c("BareMemory.figure")) + " one request by libcurl", c("MemoryAfterStartUp.figure") / 1e6, 3, "MB"},
        {"resident memory after 5,000 events", megabytes(c("MemoryAfterEvents.figure")), "",
         c("MemoryAfterEvents.figure") / 1e6, 4, "MB"},
        {"without the code of libraries: after start-up", megabytes(c("OwnMemoryAfterStartUp.figure")), "",
         c("OwnMemoryAfterStartUp.figure") / 1e6, 0, "MB"},
        {"without the code of libraries: after 5,000 events", megabytes(c("OwnMemoryAfterEvents.figure")), "",
         c("OwnMemoryAfterEvents.figure") / 1e6, 0, "MB"},
        {"threads", fmt::format("{:.0f}", c("Threads.figure")), "", c("Threads.figure"), 4, "threads"},
        {"shared library, stripped", megabytes(librarySize), "", librarySize / 1e6, 1, "MB"},
        {"a log line below the threshold, beside its text", fmt::format("{:.1f} ns", logLine * 1e9),
         fmt::format("{:.1f} ns text", s("BuildLogText") * 1e9), logLine * 1e9, 20, "ns"},
        {"a session start", microseconds(s("SessionStart")),
         microseconds(s("SessionStartWithoutLogging")) + " logging compiled out",
         s("SessionStart") / s("SessionStartWithoutLogging"), 3, "times"},
        {"schedule 1,000 local notifications", milliseconds(s("ScheduleNotifications/1000")), "",
         s("ScheduleNotifications/1000") * 1e3, 0, "ms"},
        {"the same: growth from 100 to 1,000", "", "", growth("ScheduleNotifications", "/100", "/1000"), nLogN(100),
         "times"},
        {"the same: growth from 1,000 to 10,000", "", "", growth("ScheduleNotifications", "/1000", "/10000"),
         nLogN(1000), "times"},
        {"one phash pass over 1,000", milliseconds(s("PhashPass/1000")), "", s("PhashPass/1000") * 1e3, 0, "ms"},
        {"the same: growth from 100 to 1,000", "", "", growth("PhashPass", "/100", "/1000"), nLogN(100), "times"},
        {"the same: growth from 1,000 to 10,000", "", "", growth("PhashPass", "/1000", "/10000"), nLogN(1000), "times"},
        {"schedule one beside 1,000, with the file that keeps them", milliseconds(s("ScheduleIntoFile")), "",
         s("ScheduleIntoFile") * 1e3, 0, "ms"},
        {"read a list of 10,000 messages of 4 KB", milliseconds(s("InboxList")),
         milliseconds(s("BareInboxList")) + " SELECT", s("InboxList") / s("BareInboxList"), 3, "times"},
        {"the most memory meanwhile, beside the text returned", "", "", c("InboxListMemory.figure"), 2.5, "times"},
        {"a list request, until its handler has the list", milliseconds(s("InboxListRequest")), "",
         s("InboxListRequest") * 1e3, 0, "ms"},
        {"the same: time on the main thread", microseconds(s("InboxMainThread")), "", s("InboxMainThread") * 1e6, 50,
         "µs"},
        {"a first synchronisation of 500 messages", milliseconds(s("InboxSynchronisation")),
         milliseconds(s("BareInboxSynchronisation")) + " libcurl, and inserts",
         s("InboxSynchronisation") / s("BareInboxSynchronisation"), 1.3, "times"},
        {"a location update with 20 geofences", microseconds(s("LocationUpdate/20")),
         microseconds(s("LocationUpdate/1")) + " with 1", s("LocationUpdate/20") / s("LocationUpdate/1"), 0, "times"},
        {"crossing into one of 20 geofences", microseconds(s("CrossIntoRegion/20")),
         microseconds(s("CrossIntoRegion/1")) + " with 1", s("CrossIntoRegion/20") / s("CrossIntoRegion/1"), 0,
         "times"},
        {"a location update that brings 20 other geofences", milliseconds(s("ChangeRegions/20")),
         milliseconds(s("ChangeRegions/1")) + " with 1", s("ChangeRegions/20") / s("ChangeRegions/1"), 0, "times"},
        {"a ranging result with 50 beacons and 100 rules", microseconds(s("RangingResult/50/100")),
         microseconds(s("RangingResult/1/1")) + " with 1 and 1", s("RangingResult/50/100") / s("RangingResult/1/1"), 0,
         "times"},
    };
}

void printTable(const std::vector<Row>& rows) {
    fmt::print("\n| What | Measured | Bare | Figure | Target | |\n|---|---|---|---|---|---|\n");
    for (const auto& row : rows) {
        const bool isTold = row.target == 0;
        const bool isMet = row.isAtLeast ? row.figure >= row.target : row.figure <= row.target;
        const auto target =
            isTold ? std::string("told") : fmt::format("{} {:.4g} {}", row.isAtLeast ? "≥" : "≤", row.target, row.unit);
        fmt::print("| {} | {} | {} | {:.2f} {} | {} | {} |\n", row.what, row.measured, row.bare, row.figure, row.unit,
                   target, isTold ? "" : (isMet ? "met" : "missed"));
    }
}

double sizeOfStrippedLibrary() {
    std::error_code error;
    const auto size = std::filesystem::file_size(VORLANE_STRIPPED_LIBRARY, error);
    return error ? 0 : static_cast<double>(size);
}

}  // namespace

}  // namespace vorlane::benchmarks

int main(int count, char** arguments) {
    using namespace vorlane::benchmarks;
    if (count == 3 && std::string_view(arguments[1]) == "--role") {
        std::printf("%.9g\n", figureOfRole(arguments[2]));
        std::fflush(stdout);
        return 0;
    }
    benchmark::Initialize(&count, arguments);
    KeepingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    try {
        printTable(rowsOf(reporter, sizeOfStrippedLibrary()));
    } catch (const std::out_of_range&) {
        fmt::print("\nNo table: a filter left benchmarks out.\n");
    }
    return 0;
}

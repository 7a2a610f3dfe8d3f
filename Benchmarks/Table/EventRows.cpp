#include <fmt/format.h>

#include "Benchmarks/Table/Rows.h"

namespace vorlane::benchmarks {

namespace {

constexpr double kEvents = 5000;
// The counters add up the processor time of all iterations.
constexpr double kSentEvents = 3 * kEvents;

Row percentile(const Results& results, const std::string& what, const std::string& counter, double target) {
    const auto value = results.counter(counter);
    return {.what = what, .measured = microseconds(value), .figure = value * 1e6, .unit = "µs", .target = target};
}

}  // namespace

std::vector<Row> eventRows(const Results& results) {
    const auto mean = results.seconds("RecordEvent");
    const auto bare = results.seconds("BareBuildAndDump");
    const auto sent = results.seconds("SendEvents");
    const auto bareSent = results.seconds("BareSendEvents");
    const auto processor = results.counter("SendEvents.cpu");
    const auto bareProcessor = results.counter("BareSendEvents.cpu");
    return {
        {.what = "record one event with five keys, mean",
         .measured = microseconds(mean),
         .bare = microseconds(bare) + " build and dump",
         .figure = mean * 1e6,
         .unit = "µs",
         .target = 6},
        percentile(results, "the same, median", "RecordEvent.p50", 3),
        percentile(results, "the same, 99th percentile", "RecordEvent.p99", 25),
        percentile(results, "events 1 ms apart, median", "RecordEventApart.p50", 9),
        percentile(results, "the same, 99th percentile", "RecordEventApart.p99", 0),
        {.what = "5,000 events, one request each: rate",
         .measured = fmt::format("{:.0f}/s", kEvents / sent),
         .bare = fmt::format("{:.0f}/s libcurl", kEvents / bareSent),
         .figure = bareSent / sent,
         .unit = "times",
         .target = 0.75,
         .isAtLeast = true},
        {.what = "the same: processor time per event",
         .measured = microseconds(processor / kSentEvents),
         .bare = microseconds(bareProcessor / kSentEvents) + " libcurl",
         .figure = processor / bareProcessor,
         .unit = "times",
         .target = 1.5},
    };
}

}  // namespace vorlane::benchmarks

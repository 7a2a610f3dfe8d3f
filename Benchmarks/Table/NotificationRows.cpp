#include <cmath>

#include "Benchmarks/Table/Rows.h"

namespace vorlane::benchmarks {

namespace {

/// The factor by which n log n grows from `count` to ten times `count`.
double nLogNGrowth(double count) { return 10 * std::log(10 * count) / std::log(count); }

Row growthRow(const Results& results, const std::string& name, int from) {
    const auto to = from * 10;
    return {
        .what = "the same: growth from " + std::to_string(from) + " to " + std::to_string(to),
        .figure = results.seconds(name + "/" + std::to_string(to)) / results.seconds(name + "/" + std::to_string(from)),
        .unit = "times",
        .target = nLogNGrowth(from)};
}

Row timeRow(const Results& results, const std::string& what, const std::string& name, double target) {
    const auto seconds = results.seconds(name);
    return {.what = what, .measured = milliseconds(seconds), .figure = seconds * 1e3, .unit = "ms", .target = target};
}

}  // namespace

std::vector<Row> notificationRows(const Results& results) {
    return {
        timeRow(results, "schedule 1,000 local notifications", "ScheduleNotifications/1000", 0),
        growthRow(results, "ScheduleNotifications", 100),
        growthRow(results, "ScheduleNotifications", 1000),
        timeRow(results, "one phash pass over 1,000", "PhashPass/1000", 0),
        growthRow(results, "PhashPass", 100),
        growthRow(results, "PhashPass", 1000),
        timeRow(results, "schedule one beside 1,000, with their file", "ScheduleIntoFile", 0.5),
    };
}

}  // namespace vorlane::benchmarks

#include "Benchmarks/Table/Rows.h"

namespace vorlane::benchmarks {

namespace {

Row row(const Results& results, const std::string& what, const std::string& many, const std::string& one,
        double target) {
    const auto seconds = results.seconds(many);
    return {.what = what,
            .measured = milliseconds(seconds),
            .bare = milliseconds(results.seconds(one)) + " with 1",
            .figure = seconds * 1e3,
            .unit = "ms",
            .target = target};
}

}  // namespace

std::vector<Row> placeRows(const Results& results) {
    return {
        row(results, "a location update with 20 geofences", "LocationUpdate/20", "LocationUpdate/1", 0),
        row(results, "crossing into one of 20 geofences", "CrossIntoRegion/20", "CrossIntoRegion/1", 0.3),
        row(results, "a location update that brings 20 other geofences", "ChangeRegions/20", "ChangeRegions/1", 2),
        row(results, "a ranging result with 50 beacons and 100 rules", "RangingResult/50/100", "RangingResult/1/1", 0),
    };
}

}  // namespace vorlane::benchmarks

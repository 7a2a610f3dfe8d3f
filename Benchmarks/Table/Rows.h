#pragma once

#include <vector>

#include "Benchmarks/Table/Results.h"
#include "Benchmarks/Table/Row.h"

namespace vorlane::benchmarks {

// The rows of one subject. Each throws std::out_of_range if one of its benchmarks did not run.

std::vector<Row> eventRows(const Results& results);
std::vector<Row> startUpRows(const Results& results);
std::vector<Row> slowDiskRows(const Results& results);
std::vector<Row> storeRows(const Results& results);
std::vector<Row> memoryRows(const Results& results);
std::vector<Row> logRows(const Results& results);
std::vector<Row> notificationRows(const Results& results);
std::vector<Row> inboxRows(const Results& results);
std::vector<Row> placeRows(const Results& results);
std::vector<Row> headerRows(const Results& results);

}  // namespace vorlane::benchmarks

#pragma once

#include <string>

#include "Benchmarks/Table/Results.h"

namespace vorlane::benchmarks {

/// Writes every value of a run to `path`, as JSON: name, and one number for each repetition.
void recordBaseline(const Results& results, const std::string& path);

/// Prints each value that became larger than in the run recorded at `path` by more than the noise, which is the spread
/// of the repetitions of either run, and at least 10 %. Returns the count of such values.
int printRegressions(const Results& results, const std::string& path);

}  // namespace vorlane::benchmarks

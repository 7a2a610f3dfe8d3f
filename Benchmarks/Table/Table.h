#pragma once

#include "Benchmarks/Table/Results.h"

namespace vorlane::benchmarks {

/// Prints the rows of every subject whose benchmarks all ran.
void printTable(const Results& results);

}  // namespace vorlane::benchmarks

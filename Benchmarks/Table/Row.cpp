#include "Benchmarks/Table/Row.h"

#include <fmt/format.h>

namespace vorlane::benchmarks {

std::string microseconds(double seconds) { return fmt::format("{:.2f} µs", seconds * 1e6); }
std::string milliseconds(double seconds) { return fmt::format("{:.2f} ms", seconds * 1e3); }
std::string megabytes(double bytes) { return fmt::format("{:.2f} MB", bytes / 1e6); }

}  // namespace vorlane::benchmarks

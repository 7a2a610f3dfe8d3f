#pragma once

#include <string>

namespace vorlane::benchmarks {

/// One line of the closing table.
struct Row {
    std::string what = {};
    std::string measured = {};
    /// What the figure is compared with, measured in the same run. Empty for a figure that stands alone.
    std::string bare = {};
    double figure = 0;
    std::string unit = {};
    /// 0 for a figure without a target.
    double target = 0;
    bool isAtLeast = false;
};

std::string microseconds(double seconds);
std::string milliseconds(double seconds);
std::string megabytes(double bytes);

}  // namespace vorlane::benchmarks

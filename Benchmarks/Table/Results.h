#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace vorlane::benchmarks {

/// Keeps the results of all benchmarks, and prints them as Google Benchmark does.
class Results : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override;

    /// Returns the time of a benchmark, in seconds: the fastest of its repetitions. Throws std::out_of_range for a
    /// benchmark that did not run.
    double seconds(const std::string& name) const;
    /// Returns the smallest value of the counter "benchmark.counter" among the repetitions. Throws like seconds().
    double counter(const std::string& name) const;

    /// Every time and counter by its name, one value for each repetition.
    const std::map<std::string, std::vector<double>>& values() const { return values_; }

private:
    std::map<std::string, std::vector<double>> values_;
};

}  // namespace vorlane::benchmarks

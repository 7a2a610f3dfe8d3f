#include "Benchmarks/Table/Results.h"

#include <algorithm>

namespace vorlane::benchmarks {

void Results::ReportRuns(const std::vector<Run>& runs) {
    for (const auto& run : runs) {
        if (run.run_type == Run::RT_Aggregate || run.error_occurred) continue;
        const auto& arguments = run.run_name.args;
        const auto name = run.run_name.function_name + (arguments.empty() ? "" : "/" + arguments);
        const bool isWallTime = run.run_name.time_type == "manual_time" || run.run_name.time_type == "real_time";
        const double seconds = isWallTime ? run.real_accumulated_time : run.cpu_accumulated_time;
        values_[name].push_back(seconds / static_cast<double>(run.iterations));
        for (const auto& [counter, value] : run.counters) values_[name + "." + counter].push_back(value.value);
    }
    ConsoleReporter::ReportRuns(runs);
}

double Results::seconds(const std::string& name) const { return std::ranges::min(values_.at(name)); }

double Results::counter(const std::string& name) const { return std::ranges::min(values_.at(name)); }

}  // namespace vorlane::benchmarks

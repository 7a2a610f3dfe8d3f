#include "Benchmarks/Table/Table.h"

#include <fmt/format.h>

#include <stdexcept>

#include "Benchmarks/Table/Rows.h"

namespace vorlane::benchmarks {

namespace {

constexpr auto kSubjects = {startUpRows, slowDiskRows, eventRows,        storeRows, memoryRows,
                            logRows,     inboxRows,    notificationRows, placeRows, headerRows};

std::string verdict(const Row& row) {
    if (row.target == 0) return "";
    return (row.isAtLeast ? row.figure >= row.target : row.figure <= row.target) ? "met" : "missed";
}

void print(const Row& row) {
    const auto target =
        row.target == 0 ? "none" : fmt::format("{} {:.5g} {}", row.isAtLeast ? "≥" : "≤", row.target, row.unit);
    fmt::print("| {} | {} | {} | {:.2f} {} | {} | {} |\n", row.what, row.measured, row.bare, row.figure, row.unit,
               target, verdict(row));
}

}  // namespace

void printTable(const Results& results) {
    fmt::print("\n| What | Measured | Bare | Figure | Target | |\n|---|---|---|---|---|---|\n");
    for (const auto& subject : kSubjects) {
        try {
            for (const auto& row : subject(results)) print(row);
        } catch (const std::out_of_range&) {
            // A filter left out a benchmark of this subject.
        }
    }
}

}  // namespace vorlane::benchmarks

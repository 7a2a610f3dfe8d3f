#include <fmt/format.h>

#include "Benchmarks/Table/Rows.h"

namespace vorlane::benchmarks {

std::vector<Row> headerRows(const Results& results) {
    const auto header = results.seconds("CompileHeader");
    const auto empty = results.seconds("CompileEmpty");
    const auto lines = results.counter("CompileHeader.lines");
    return {
        {.what = "compile #include <vorlane/Vorlane.h>",
         .measured = fmt::format("{:.2f} s", header),
         .bare = fmt::format("{:.2f} s empty program", empty),
         .figure = header,
         .unit = "s",
         .target = 0.6},
        {.what = "its preprocessed lines",
         .measured = fmt::format("{:.0f}", lines),
         .bare = fmt::format("{:.0f} empty program", results.counter("CompileEmpty.lines")),
         .figure = lines,
         .unit = "lines",
         .target = 45000},
    };
}

}  // namespace vorlane::benchmarks

#include "Simulator/Demo/Transcript.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

namespace vorlane::demo {

namespace {

constexpr std::size_t kColumn = 58;

/// Returns the end of the first piece of a line: a blank within the column if there is one.
std::size_t breakOf(const std::string& text) {
    if (text.size() <= kColumn) return text.size();
    const auto blank = text.rfind(' ', kColumn);
    return blank == std::string::npos || blank < kColumn / 2 ? kColumn : blank;
}

/// Wraps the lines at the column and indents continuations.
std::vector<std::string> wrapped(const std::vector<std::string>& lines) {
    std::vector<std::string> pieces;
    for (auto rest : lines) {
        while (rest.size() > kColumn) {
            const auto end = breakOf(rest);
            pieces.push_back(rest.substr(0, end));
            rest = "    " + rest.substr(rest[end] == ' ' ? end + 1 : end);
        }
        pieces.push_back(rest);
    }
    return pieces;
}

}  // namespace

void Transcript::chapter(const std::string& title) {
    fmt::print("\n{}\n{:<{}} | {}\n{:-<{}}-+-{:-<{}}\n", title, "  the phone", kColumn, "  the service", "", kColumn,
               "", kColumn);
}

void Transcript::step(const std::vector<std::string>& phone, const std::vector<std::string>& service) {
    const auto left = wrapped(phone);
    const auto right = wrapped(service);
    for (std::size_t i = 0; i < std::max(left.size(), right.size()); ++i) {
        fmt::print("{:<{}} | {}\n", i < left.size() ? left[i] : "", kColumn, i < right.size() ? right[i] : "");
    }
    std::fflush(stdout);
}

void Transcript::line(const std::string& text) {
    fmt::print("{}\n", text);
    std::fflush(stdout);
}

}  // namespace vorlane::demo

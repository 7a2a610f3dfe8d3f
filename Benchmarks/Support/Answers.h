#pragma once

#include <map>
#include <string>
#include <string_view>

namespace vorlane::benchmarks {

/// Answers to requests: a part of the URL, and the body.
using Answers = std::map<std::string, std::string>;

/// Returns the body for the first part, in alphabetical order, that the URL contains, or null.
inline const std::string* answerTo(const Answers& answers, std::string_view url) {
    for (const auto& [part, body] : answers) {
        if (url.find(part) != std::string_view::npos) return &body;
    }
    return nullptr;
}

}  // namespace vorlane::benchmarks

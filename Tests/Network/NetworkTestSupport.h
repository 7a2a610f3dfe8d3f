#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Network/VLURLSession.h"

namespace vorlane {

/// The arguments of one call of a handler.
template <class Result>
struct Answer {
    std::optional<Result> result;
    std::int64_t status = 0;
    std::optional<NSError> error;
};

using TextAnswer = Answer<std::string>;
using JSONAnswer = Answer<Dictionary>;

/// A handler that records its calls.
inline VLURLSession::TextHandler into(std::vector<TextAnswer>& answers) {
    return [&answers](auto text, auto status, auto error) { answers.push_back({text, status, error}); };
}

inline VLURLSession::JSONHandler into(std::vector<JSONAnswer>& answers) {
    return [&answers](auto answer, auto status, auto error) { answers.push_back({answer, status, error}); };
}

inline NSURL urlOf(const std::string& string) { return NSURL::URLWithString(string).value(); }

}  // namespace vorlane

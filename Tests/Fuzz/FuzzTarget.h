#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorlane::fuzz {

/// One entrance for bytes from outside. Each input runs from a fresh start, so that an input that fails once fails
/// always; a target aborts when a promise is broken.
struct FuzzTarget {
    const char* name;
    void (*run)(std::string_view input);
};

/// Returns every target.
const std::vector<FuzzTarget>& allTargets();
/// Returns null for an unknown name.
const FuzzTarget* targetNamed(std::string_view name);

/// Aborts with `promise` on standard error unless it is kept.
void require(bool isKept, const char* promise);

// The targets, one file for each group.
void fuzzPropertyList(std::string_view input);
void fuzzConvertedPropertyList(std::string_view input);
void fuzzJSON(std::string_view input);
void fuzzText(std::string_view input);
void fuzzColour(std::string_view input);
void fuzzURL(std::string_view input);
void fuzzDeepLink(std::string_view input);
void fuzzImage(std::string_view input);
void fuzzAnswer(std::string_view input);
void fuzzPush(std::string_view input);
void fuzzLaunchOptions(std::string_view input);
void fuzzHTTPAnswer(std::string_view input);
void fuzzPhoneLine(std::string_view input);
void fuzzServiceRequest(std::string_view input);

}  // namespace vorlane::fuzz

#include "Tests/Fuzz/FuzzTarget.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace vorlane::fuzz {

const std::vector<FuzzTarget>& allTargets() {
    static const std::vector<FuzzTarget> targets = {
        {"property-list", fuzzPropertyList},
        {"converted-property-list", fuzzConvertedPropertyList},
        {"json", fuzzJSON},
        {"text", fuzzText},
        {"colour", fuzzColour},
        {"url", fuzzURL},
        {"deep-link", fuzzDeepLink},
        {"image", fuzzImage},
        {"answer", fuzzAnswer},
        {"push", fuzzPush},
        {"launch-options", fuzzLaunchOptions},
        {"http-answer", fuzzHTTPAnswer},
        {"phone-line", fuzzPhoneLine},
        {"service-request", fuzzServiceRequest},
    };
    return targets;
}

const FuzzTarget* targetNamed(std::string_view name) {
    const auto& targets = allTargets();
    const auto found = std::ranges::find_if(targets, [name](const FuzzTarget& target) { return target.name == name; });
    return found == targets.end() ? nullptr : &*found;
}

void require(bool isKept, const char* promise) {
    if (isKept) return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

}  // namespace vorlane::fuzz

#include "Platform/Internal/CallOutScope.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace vorlane {

namespace {

thread_local std::size_t openScopes = 0;
thread_local std::vector<std::function<void()>> callOutsPutOff;

}  // namespace

CallOutScope::CallOutScope() { ++openScopes; }

CallOutScope::~CallOutScope() {
    if (--openScopes > 0) return;
    for (const auto& callOut : std::exchange(callOutsPutOff, {})) callOut();
}

void CallOutScope::callAfterwards(std::function<void()> callOut) {
    if (openScopes == 0) return callOut();
    callOutsPutOff.push_back(std::move(callOut));
}

}  // namespace vorlane

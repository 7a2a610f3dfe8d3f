#pragma once

#include <functional>
#include <utility>

#include "Platform/Platform.h"

namespace vorlane {

/// Calls `handler` with `arguments` on the main queue, never inside this call. An empty handler is ignored.
template <class... Parameters, class... Arguments>
void completeOnMainQueue(const std::function<void(Parameters...)>& handler, Arguments&&... arguments) {
    if (!handler) return;
    onMainQueue([handler, ... arguments = std::decay_t<Arguments>(std::forward<Arguments>(arguments))] {
        handler(arguments...);
    });
}

}  // namespace vorlane

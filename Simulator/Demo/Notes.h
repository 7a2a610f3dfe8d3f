#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::demo {

/// What a reader of the transcript wants to know of an event of the phone; nothing for one that is of no interest.
std::optional<std::string> noteOfEvent(const Dictionary& event);

/// What a reader wants to know of a request that the service recorded: the endpoint, the answer, and what was stored.
std::string noteOfRequest(const Dictionary& request);

}  // namespace vorlane::demo

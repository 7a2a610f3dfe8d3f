#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::demo {

/// Describes an event of the phone for the transcript; `nullopt` for an event that is left out.
std::optional<std::string> noteOfEvent(const Dictionary& event);

/// Describes a request that the service recorded: the endpoint, the answer, and the stored data.
std::string noteOfRequest(const Dictionary& request);

}  // namespace vorlane::demo

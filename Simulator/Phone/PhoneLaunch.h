#pragma once

#include <optional>

#include "Public/VLSDKOptions.h"
#include "Public/VLValue.h"

namespace vorlane::phone {

class Phone;

/// Returns the start-up options of a line: its "preset", changed by its "options". Throws BadLine.
VLSDKOptions sdkOptionsFrom(Phone& phone, const Dictionary& line);

/// Returns launch options with "remote" (a payload) and "local" (a notification, or its handle) under the platform's
/// keys; `nullopt` for null. Throws BadLine.
std::optional<Dictionary> launchOptionsFrom(Phone& phone, const Value& value);

}  // namespace vorlane::phone

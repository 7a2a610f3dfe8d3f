#pragma once

#include <optional>

#include "Public/VLSDKOptions.h"
#include "Public/VLValue.h"

namespace vorlane::phone {

class Phone;

/// The start-up options of a line: its "preset" to start from, and what its "options" name. Throws BadLine.
VLSDKOptions sdkOptionsFrom(Phone& phone, const Dictionary& line);

/// "remote" (a payload) and "local" (a notification, or its handle) under the platform's keys; nothing for null. Throws
/// BadLine.
std::optional<Dictionary> launchOptionsFrom(Phone& phone, const Value& value);

}  // namespace vorlane::phone

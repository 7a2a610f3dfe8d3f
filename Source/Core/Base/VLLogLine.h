#pragma once

#include <optional>
#include <string>

#include "Public/VLLogger.h"

namespace vorlane {

/// A line as the ready sinks write it: the time of the platform's clock in UTC, the level, the message, and the payload
/// on further lines ("2026-01-31T12:00:00.000Z ERROR message"). No line break at the end.
std::string logLine(const std::string& message, const std::optional<Value>& payload, VLLogLevel level);

}  // namespace vorlane

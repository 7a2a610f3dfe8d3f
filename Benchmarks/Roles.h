#pragma once

#include <string>

namespace vorlane::benchmarks {

/// Measures one thing in this process, which does nothing else, and gives the figure: seconds, bytes or a count.
///
/// "start-up", "bare-start-up" (the file writes that a start-up must make, alone), "shutdown-idle", "shutdown-busy",
/// "memory-after-start-up", "bare-memory" (one request by libcurl alone), "memory-after-events", the two with "own-" in
/// front, "threads", "session-start", and those of the inbox: "inbox-list", "bare-inbox-list", "inbox-list-request",
/// "inbox-main-thread", "inbox-list-memory", "inbox-synchronisation", "bare-inbox-synchronisation".
double figureOfRole(const std::string& role);

}  // namespace vorlane::benchmarks

#pragma once

#include <functional>
#include <thread>

namespace vorlane {

/// Starts a thread that blocks every signal from its first instruction on: signals are for the host to handle, and a
/// peer that hangs up must not raise SIGPIPE. Returns a thread that is not joinable if the system has no thread left.
std::thread startQuietThread(std::function<void()> body);

}  // namespace vorlane

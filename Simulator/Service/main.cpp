#include <pthread.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "Simulator/Service/Http/ServiceServer.h"
#include "Simulator/Service/ServiceOptions.h"

namespace {

/// Blocks the signals in every thread started afterwards; the main thread waits for them.
sigset_t endingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

void serveUntilToldToEnd(const vorlane::service::ServiceOptions& options) {
    const auto signals = endingSignals();
    const vorlane::service::ServiceServer server(options);
    std::printf("listening on %s\n", server.origin().c_str());
    std::fflush(stdout);
    int signal = 0;
    sigwait(&signals, &signal);
}

}  // namespace

int main(int count, char** arguments) {
    using vorlane::service::ServiceOptions;
    try {
        const auto options = ServiceOptions::fromArguments(std::vector<std::string>(arguments + 1, arguments + count));
        if (options.wantsHelp) {
            std::fputs(ServiceOptions::usage().c_str(), stdout);
        } else {
            serveUntilToldToEnd(options);
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vorlane-service: %s\n", error.what());
        return 1;
    }
}

#include "Platform/Internal/QuietThread.h"

#include <pthread.h>
#include <signal.h>

#include <system_error>
#include <utility>

namespace vorlane {

std::thread startQuietThread(std::function<void()> body) {
    sigset_t all;
    sigset_t previous;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous);
    std::thread thread;
    try {
        thread = std::thread(std::move(body));
    } catch (const std::system_error&) {
        // Reported by the thread that is not joinable.
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    return thread;
}

}  // namespace vorlane

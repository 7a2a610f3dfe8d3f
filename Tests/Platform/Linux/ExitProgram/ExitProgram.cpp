// Leaves the process without a shutdown while requests are under way, in one of several ways, and ends with a status
// other than 0 if a callback of the host runs while the host's own statics are being destroyed.
//
// Usage: vorlane_exit_program WAY URL COUNT, where WAY is return, exit, thread, queue, handler or busy. But for
// "handler" and "busy" it waits, before it leaves, for a line on standard input.

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <thread>

#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/NSURLSession.h"

namespace {

using namespace vorlane;

constexpr int kCalledTooLate = 66;

std::atomic<bool> hasHostEnded = false;

/// Stands for the host's statics: whoever comes after its end comes too late.
struct HostState {
    HostState() = default;
    HostState(const HostState&) = delete;
    HostState& operator=(const HostState&) = delete;
    ~HostState() {
        hasHostEnded = true;
        // Time enough for a callback that was not held back.
        for (int i = 0; i < 2000; ++i) std::this_thread::yield();
    }
    void use() const {
        if (hasHostEnded) _exit(kCalledTooLate);
    }
};

const HostState earlyState;

/// Made on first use, thus after the library started and destroyed before whatever was made until then.
const HostState& lateState() {
    static const HostState state;
    return state;
}

/// What a handler holds on to, which must not be destroyed too late either.
struct Captured {
    Captured() = default;
    Captured(const Captured&) = delete;
    Captured& operator=(const Captured&) = delete;
    ~Captured() { earlyState.use(); }
};

class Host {
public:
    Host(std::string way, std::string url) : way_(std::move(way)), url_(*NSURL::URLWithString(url)) {}

    void request() {
        session_
            ->dataTaskWithRequest({url_},
                                  [this, captured = std::make_shared<Captured>()](auto, auto, auto) { answered(); })
            ->resume();
    }

    void leave() {
        if (way_ == "exit") std::exit(0);
        if (way_ == "thread") std::thread([] { std::exit(0); }).join();
        if (way_ == "queue") queue_->post([] { std::exit(0); });
        if (way_ == "queue" || way_ == "handler") platform_->run();
    }

    void waitForAnswers(int count) const {
        while (answers_ < count) std::this_thread::yield();
    }

private:
    void answered() {
        earlyState.use();
        lateState().use();
        ++answers_;
        if (way_ == "handler") std::exit(0);
        request();
    }

    const std::string way_;
    const NSURL url_;
    const std::shared_ptr<LinuxPlatform> platform_ = std::make_shared<LinuxPlatform>();
    const std::shared_ptr<DispatchQueue> queue_ = platform_->makeSerialQueue("host");
    const std::shared_ptr<NSURLSession> session_ = platform_->makeURLSession({});
    std::atomic<int> answers_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    const std::string way = argv[1];
    // Never destroyed: many a host keeps what it uses for ever.
    static Host* const host = new Host(way, argv[2]);
    for (int i = std::atoi(argv[3]); i > 0; --i) host->request();
    if (way == "busy") {
        host->waitForAnswers(20);
    } else if (way != "handler") {
        std::string line;
        std::getline(std::cin, line);
    }
    host->leave();
    return 0;
}

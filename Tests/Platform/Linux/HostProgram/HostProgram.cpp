// A small host application, for tests that need a process of their own.
//
// describe: prints its bundle identifier, its documents folder and whether it finds its resource "sound.txt".
//
// journal TEXT: writes TEXT to the system journal, once at each level.
//
// leave WAY URL COUNT: starts COUNT requests and leaves without a shutdown: by return, exit, thread, queue, handler,
// busy, fork or throw. The status is 66 if a callback of the host runs while the host's statics are being destroyed,
// and 67 if leaving takes too long. Except for "handler" and "busy", it waits for a line on standard input first.

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "Platform/Linux/Application/ExitGate.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/NSBundle.h"
#include "Platform/NSURLSession.h"
#include "Platform/OSLog.h"

namespace {

using namespace vorlane;

using SteadyClock = std::chrono::steady_clock;

constexpr int kCalledTooLate = 66;
constexpr int kLeftTooLate = 67;

std::atomic<bool> hasHostEnded = false;

/// Represents the host's statics: a use after its destruction is a failure.
struct HostState {
    HostState() = default;
    HostState(const HostState&) = delete;
    HostState& operator=(const HostState&) = delete;
    ~HostState() {
        hasHostEnded = true;
        // Time for a callback that was not held back.
        for (int i = 0; i < 2000; ++i) std::this_thread::yield();
    }
    void use() const {
        if (hasHostEnded) _exit(kCalledTooLate);
    }
};

const HostState earlyState;

/// Made on first use: after the library has started, and destroyed before all that was made earlier.
const HostState& lateState() {
    static const HostState state;
    return state;
}

/// A handler's capture, which must not be destroyed too late either.
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
        if (way_ == "fork") leaveInAChild();
        if (way_ == "throw") leaveAfterAnException();
    }

    void waitForAnswers(int count) const {
        while (answers_ < count) std::this_thread::yield();
    }

private:
    /// The child has no threads, so it must not wait for one.
    static void leaveInAChild() {
        const auto start = SteadyClock::now();
        const pid_t child = fork();
        if (child == 0) std::exit(0);
        int status = 0;
        waitpid(child, &status, 0);
        if (status != 0 || SteadyClock::now() - start > std::chrono::milliseconds(900)) _exit(kLeftTooLate);
    }

    /// The task that threw has ended, so the gate must not wait for it.
    void leaveAfterAnException() const {
        platform_->mainQueue()->post([] { throw std::runtime_error("thrown by the host"); });
        try {
            platform_->poll();
        } catch (const std::runtime_error&) {
            std::thread(closeGate).join();
        }
    }

    static void closeGate() {
        const auto start = SteadyClock::now();
        ExitGate::shared().close();
        if (SteadyClock::now() - start > std::chrono::milliseconds(190)) _exit(kLeftTooLate);
    }

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

int describe() {
    LinuxPlatform platform;
    const auto bundle = platform.mainBundle();
    std::cout << bundle->bundleIdentifier().value_or("none") << "\n"
              << platform.documentsFolder() << "\n"
              << (bundle->pathForResource("sound", "txt") ? "found" : "missing") << "\n";
    return 0;
}

int writeToJournal(const std::string& text) {
    const auto log = LinuxPlatform().makeOSLog("vorlane.sdk", "VL");
    for (const auto type : {OSLogType::Error, OSLogType::DefaultType, OSLogType::Info, OSLogType::Debug}) {
        log->log(type, text);
    }
    return 0;
}

int leave(const std::string& way, const std::string& url, int count) {
    // Never destroyed, as in many hosts.
    static Host* const host = new Host(way, url);
    for (int i = 0; i < count; ++i) host->request();
    if (way == "busy") {
        host->waitForAnswers(20);
    } else if (way != "handler") {
        std::string line;
        std::getline(std::cin, line);
    }
    host->leave();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string task = argc > 1 ? argv[1] : "";
    if (task == "describe" && argc == 2) return describe();
    if (task == "journal" && argc == 3) return writeToJournal(argv[2]);
    if (task == "leave" && argc == 5) return leave(argv[2], argv[3], std::atoi(argv[4]));
    return 2;
}

#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <string>

#include "Benchmarks/Support/Answers.h"

namespace vorlane::benchmarks {

/// A web server on loopback in a process of its own, so that its processor time does not count as the library's.
/// Answers with `answers`, or else with "{}", or never. Ends with the object.
class LoopbackServer {
public:
    enum class Manner { Answers, IsSilent };

    explicit LoopbackServer(Manner manner = Manner::Answers);
    explicit LoopbackServer(Answers answers);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    std::string origin() const { return "http://127.0.0.1:" + std::to_string(port_); }
    std::uint64_t requests() const { return shared_->requests.load(); }

    /// Resets the counter, and makes wait() return at `count` requests. Must precede the first of them.
    void expect(std::uint64_t count);
    /// Waits until the expected number of requests has arrived.
    void wait() const;

private:
    struct Shared {
        std::atomic<std::uint64_t> requests;
        std::atomic<std::uint64_t> expected;
    };

    LoopbackServer(Manner manner, const Answers& answers);
    [[noreturn]] static void serve(int listener, Manner manner, const Answers& answers, Shared& shared, int reached);

    Shared* shared_ = nullptr;
    std::uint16_t port_ = 0;
    int reached_ = -1;
    pid_t process_ = -1;
};

}  // namespace vorlane::benchmarks

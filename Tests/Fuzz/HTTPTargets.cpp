#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

#include "Platform/Linux/Curl/CurlURLSession.h"
#include "Tests/Fuzz/FuzzTarget.h"
#include "Tests/Platform/Linux/Curl/LoopbackServer.h"

namespace vorlane::fuzz {

namespace {

/// What the server writes to every connection before it hangs up.
class RawAnswer {
public:
    void set(std::string_view bytes) {
        const std::lock_guard lock(mutex_);
        bytes_ = bytes;
    }
    std::string get() const {
        const std::lock_guard lock(mutex_);
        return bytes_;
    }

private:
    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::string bytes_;
};

void wait(CurlURLSession& session, const NSURL& url) {
    std::mutex mutex;
    std::condition_variable changed;
    int calls = 0;
    session
        .dataTaskWithRequest({.URL = url},
                             [&](const auto& data, const auto& response, const auto& error) {
                                 require(response ? !error : error && !data, "a response or an error");
                                 const std::lock_guard lock(mutex);
                                 ++calls;
                                 changed.notify_all();
                             })
        ->resume();
    std::unique_lock lock(mutex);
    require(changed.wait_for(lock, std::chrono::seconds(20), [&] { return calls > 0; }), "every request ends");
    require(calls == 1, "a handler runs exactly once");
}

}  // namespace

void fuzzHTTPAnswer(std::string_view input) {
    static RawAnswer answer;
    static LoopbackServer server([](LoopbackServer::Connection& connection) {
        connection.readRequest();
        connection.write(answer.get());
    });
    static CurlURLSession session({.timeoutIntervalForRequest = 5});
    answer.set(input);
    wait(session, *NSURL::URLWithString(server.url("/answer")));
}

}  // namespace vorlane::fuzz

#include "Tests/Platform/Linux/Curl/HeldNames.h"

#include <dlfcn.h>
#include <netdb.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string_view>

#include "Platform/Linux/Curl/CurlResolver.h"

namespace vorlane {

namespace {

using LookUp = int (*)(const char*, const char*, const addrinfo*, addrinfo**);

struct Names {
    std::mutex mutex;
    std::condition_variable changed;
    // Guarded by mutex.
    bool isHolding = false;
    bool isReplaced = false;
    std::size_t begun = 0;
    std::size_t underWay = 0;
};

/// Never destroyed: a look-up may outlive the test program's statics.
Names& names() {
    static auto* const shared = new Names;
    return *shared;
}

/// Whether the caller has to find 127.0.0.1 itself.
bool waitForRelease() {
    std::unique_lock lock(names().mutex);
    if (!names().isReplaced) return false;
    ++names().begun;
    ++names().underWay;
    names().changed.notify_all();
    names().changed.wait(lock, [] { return !names().isHolding; });
    return true;
}

void lookUpEnded() {
    const std::lock_guard lock(names().mutex);
    --names().underWay;
    names().changed.notify_all();
}

}  // namespace

HeldNames::HeldNames() {
    // A look-up of an earlier test would answer this one's requests for the same name.
    CurlResolver::shared().waitUntilIdle(std::chrono::steady_clock::now() + std::chrono::seconds(10));
    const std::lock_guard lock(names().mutex);
    names().isHolding = names().isReplaced = true;
    names().begun = 0;
}

HeldNames::~HeldNames() {
    release();
    std::unique_lock lock(names().mutex);
    names().changed.wait(lock, [] { return names().underWay == 0; });
    names().isReplaced = false;
}

void HeldNames::release() {
    const std::lock_guard lock(names().mutex);
    names().isHolding = false;
    names().changed.notify_all();
}

void HeldNames::waitForLookUps(std::size_t count) {
    std::unique_lock lock(names().mutex);
    names().changed.wait(lock, [count] { return names().begun >= count; });
}

std::size_t HeldNames::lookUpCount() {
    const std::lock_guard lock(names().mutex);
    return names().begun;
}

}  // namespace vorlane

// Takes the place of the system's function for the whole program, libcurl included.
extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
    static const auto real = reinterpret_cast<vorlane::LookUp>(dlsym(RTLD_NEXT, "getaddrinfo"));
    const std::string_view name = node == nullptr ? "" : node;
    if (name.ends_with("missing.test")) return EAI_NONAME;
    if (!name.ends_with("held.test") || !vorlane::waitForRelease()) return real(node, service, hints, result);
    const int status = real("127.0.0.1", service, hints, result);
    vorlane::lookUpEnded();
    return status;
}

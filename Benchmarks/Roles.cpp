#include "Benchmarks/Roles.h"

#include <curl/curl.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <thread>

#include "Benchmarks/InboxRoles.h"
#include "Benchmarks/Support/BareFile.h"
#include "Benchmarks/Support/Host.h"
#include "Benchmarks/Support/LoopbackServer.h"
#include "Benchmarks/Support/Process.h"
#include "Core/Startup/VLBootstrap.h"
#include "Platform/Internal/SerialDispatchQueue.h"
#include "Platform/NSFileManager.h"
#include "Public/Vorlane.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tracking/VLSessionService.h"

namespace vorlane::benchmarks {

namespace {

constexpr int kBurst = 5000;
constexpr int kWritesOfAStartUp = 2;
constexpr const char* kSettingsFile = "/VLLibSettings.plist";

/// Runs a first launch, so that the folder has the files of an application that ran before.
void makeExistingFolder(const std::string& folder) {
    installOfflinePlatform(folder);
    startLibrary();
    Platform::current().application()->didBecomeActive();
    Platform::current().application()->didEnterBackground();
    Platform::shutdown();
    Platform::install(nullptr);
}

/// Sends events, and waits until the server has received all of them.
void sendEvents(LoopbackServer& server, int count) {
    server.expect(static_cast<std::uint64_t>(count));
    for (int i = 0; i < count; ++i) Vorlane::registerEventWithType("benchmark", "event");
    server.wait();
}

double startUp(bool folderExists) {
    const TemporaryFolder folder;
    // Forked before the measurement, which would otherwise include the copying of shared pages.
    const LoopbackServer server;
    if (folderExists) makeExistingFolder(folder.path());
    const auto seconds = secondsOf([&] {
        installLinuxPlatform(folder.path(), server.origin());
        startLibrary();
    });
    Platform::shutdown();
    return seconds;
}

/// Writes the files of a start-up without a flush, and begins one request by libcurl.
double bareStartUp() {
    const TemporaryFolder folder;
    const LoopbackServer server;
    makeExistingFolder(folder.path());
    const auto bytes = NSFileManager::contentsAtPath(folder.path() + kSettingsFile).value();
    return secondsOf([&] {
        for (int i = 0; i < kWritesOfAStartUp; ++i) writeBareFile(bytes, folder.path() + kSettingsFile);
        curl_global_init(CURL_GLOBAL_DEFAULT);
        CURLM* const multi = curl_multi_init();
        CURL* const transfer = curl_easy_init();
        curl_easy_setopt(transfer, CURLOPT_URL, server.origin().c_str());
        curl_multi_add_handle(multi, transfer);
        int running = 0;
        curl_multi_perform(multi, &running);
    });
}

/// Measures a step of an application that has started with an existing folder, after `prepare`.
double stepAfterStartUp(const std::function<void()>& prepare, const std::function<void()>& step) {
    const TemporaryFolder folder;
    const LoopbackServer server;
    makeExistingFolder(folder.path());
    installLinuxPlatform(folder.path(), server.origin());
    startLibrary();
    if (prepare) prepare();
    const auto seconds = secondsOf(step);
    Platform::shutdown();
    return seconds;
}

void becomeActive() { Platform::current().application()->didBecomeActive(); }
void enterBackground() { Platform::current().application()->didEnterBackground(); }

double shutdownWith(LoopbackServer::Manner manner, int requests) {
    const TemporaryFolder folder;
    LoopbackServer server(manner);
    server.expect(1);
    installLinuxPlatform(folder.path(), server.origin());
    startLibrary();
    server.wait();  // for the request of the configuration, so that the network thread runs
    for (int i = 0; i < requests; ++i) Vorlane::registerEventWithType("benchmark", "event");
    return secondsOf([] { Platform::shutdown(); });
}

double memoryAfter(int events, std::int64_t (*memory)() = residentMemory) {
    const TemporaryFolder folder;
    LoopbackServer server;
    server.expect(1);
    const auto before = memory();
    const auto platform = installLinuxPlatform(folder.path(), server.origin());
    startLibrary();
    server.wait();
    if (events > 0) sendEvents(server, events);
    platform->runFor(1.0);
    return static_cast<double>(memory() - before);
}

/// Returns the growth of the peak over the resident memory before start-up, while events are sent.
double peakMemoryOfEvents() {
    const TemporaryFolder folder;
    LoopbackServer server;
    server.expect(1);
    const auto before = startPeakMemory();
    installLinuxPlatform(folder.path(), server.origin());
    startLibrary();
    server.wait();
    sendEvents(server, kBurst);
    return static_cast<double>(peakMemory() - before);
}

/// Returns the memory that one request by libcurl takes, on a thread of its own.
double bareMemory() {
    LoopbackServer server;
    const auto before = residentMemory();
    std::thread([url = server.origin()] {
        curl_global_init(CURL_GLOBAL_DEFAULT);
        CURLM* const multi = curl_multi_init();
        CURL* const transfer = curl_easy_init();
        curl_easy_setopt(transfer, CURLOPT_URL, url.c_str());
        curl_easy_setopt(
            transfer, CURLOPT_WRITEFUNCTION,
            +[](char*, std::size_t size, std::size_t count, void*) { return size * count; });
        curl_multi_add_handle(multi, transfer);
        for (int running = 1; running > 0; curl_multi_poll(multi, nullptr, 0, 100, nullptr)) {
            curl_multi_perform(multi, &running);
        }
        curl_multi_remove_handle(multi, transfer);
        curl_easy_cleanup(transfer);
        curl_multi_cleanup(multi);
    }).join();
    return static_cast<double>(residentMemory() - before);
}

double threads() {
    const TemporaryFolder folder;
    LoopbackServer server;
    server.expect(1);
    const auto platform = installLinuxPlatform(folder.path(), server.origin());
    startLibrary();
    server.wait();
    // Queues that only start-up needed have given their threads back.
    platform->runFor(std::chrono::duration<double>(SerialDispatchQueue::kLongestRest).count() + 1);
    sendEvents(server, 100);
    platform->runFor(0.2);
    return static_cast<double>(threadCount());
}

double sessionStart() {
    constexpr int kWarmUp = 200;
    constexpr int kRounds = 20000;
    const TemporaryFolder folder;
    installOfflinePlatform(folder.path());
    startLibrary();
    const auto bootstrap = VLBootstrap::bootstrapWithURLs(Vorlane::getURLs());
    const auto sessionService = bootstrap->getComponent<VLSessionService>();
    // A session that is started again sends another start request and writes no file.
    for (int i = 0; i < kWarmUp; ++i) sessionService->sessionStart();
    const auto seconds = secondsOf([&sessionService] {
        for (int i = 0; i < kRounds; ++i) sessionService->sessionStart();
    });
    Platform::shutdown();
    return seconds / kRounds;
}

}  // namespace

double figureOfRole(const std::string& role) {
    static const std::map<std::string, std::function<double()>> roles = {
        {"start-up", [] { return startUp(true); }},
        {"fresh-start-up", [] { return startUp(false); }},
        {"become-active", [] { return stepAfterStartUp(nullptr, becomeActive); }},
        {"enter-background", [] { return stepAfterStartUp(becomeActive, enterBackground); }},
        {"set-tracking-id", [] { return stepAfterStartUp(becomeActive, [] { Vorlane::setTrackingId("anna"); }); }},
        {"bare-start-up", bareStartUp},
        {"shutdown-idle", [] { return shutdownWith(LoopbackServer::Manner::Answers, 0); }},
        {"shutdown-busy", [] { return shutdownWith(LoopbackServer::Manner::IsSilent, 100); }},
        {"memory-after-start-up", [] { return memoryAfter(0); }},
        {"bare-memory", bareMemory},
        {"peak-memory", peakMemoryOfEvents},
        {"memory-after-events", [] { return memoryAfter(kBurst); }},
        {"own-memory-after-start-up", [] { return memoryAfter(0, ownMemory); }},
        {"own-memory-after-events", [] { return memoryAfter(kBurst, ownMemory); }},
        {"threads", threads},
        {"session-start", sessionStart},
        {"inbox-list", inboxList},
        {"bare-inbox-list", bareInboxList},
        {"inbox-list-request", inboxListRequest},
        {"inbox-main-thread", inboxMainThread},
        {"inbox-list-memory", inboxListMemory},
        {"inbox-synchronisation", inboxSynchronisation},
        {"bare-inbox-synchronisation", bareInboxSynchronisation},
    };
    return roles.at(role)();
}

}  // namespace vorlane::benchmarks

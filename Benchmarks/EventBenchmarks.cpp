#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Benchmarks/Support/BareSender.h"
#include "Benchmarks/Support/Host.h"
#include "Benchmarks/Support/LoopbackServer.h"
#include "Benchmarks/Support/Process.h"
#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Public/Vorlane.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane::benchmarks {

namespace {

constexpr int kEvents = 5000;

using SteadyClock = std::chrono::steady_clock;

Dictionary fiveKeys() {
    return {{"item", "running shoes"}, {"size", 42}, {"price", 129.95}, {"currency", "EUR"}, {"gift", false}};
}

/// The body of an event with five keys. Constants stand for the settings.
Value eventBody() {
    Value body = Value::object();
    body["lv"] = "2.0.1";
    body["acit"] = "1700000000000";
    body["device_id"] = "01234567-89AB-CDEF-0123-456789ABCDEF";
    body["sid"] = "FEDCBA98-7654-3210-FEDC-BA9876543210";
    body["app_key"] = "0123456789abcdef0123456789abcdef";
    body["tracking_id"] = "@VL@456789abcdef0123456789abcdef";
    body["phash"] = "";
    body["event_type"] = "purchase";
    body["event_label"] = fiveKeys();
    return body;
}

double secondsSince(SteadyClock::time_point start) {
    return std::chrono::duration<double>(SteadyClock::now() - start).count();
}

void BareBuildAndDump(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(eventBody().dump());
}
BENCHMARK(BareBuildAndDump)->Iterations(20000);

void setPercentiles(benchmark::State& state, std::vector<double> times) {
    std::ranges::sort(times);
    state.counters["p50"] = times[times.size() / 2];
    state.counters["p99"] = times[times.size() * 99 / 100];
}

/// Measures the caller's thread, while the sender works on the events before, which are `interval` apart.
void recordEvents(benchmark::State& state, std::chrono::milliseconds interval) {
    const TemporaryFolder folder;
    LoopbackServer server;
    installLinuxPlatform(folder.path(), server.origin());
    startLibrary();
    std::vector<double> times;
    times.reserve(static_cast<std::size_t>(state.max_iterations));
    for (auto _ : state) {
        if (interval.count() > 0) std::this_thread::sleep_for(interval);
        const auto start = SteadyClock::now();
        Vorlane::registerEventWithType("purchase", fiveKeys());
        times.push_back(secondsSince(start));
        state.SetIterationTime(times.back());
    }
    setPercentiles(state, std::move(times));
    Platform::shutdown();
    Platform::install(nullptr);
}

void RecordEvent(benchmark::State& state) { recordEvents(state, {}); }
BENCHMARK(RecordEvent)->Iterations(kEvents)->UseManualTime();

void RecordEventApart(benchmark::State& state) { recordEvents(state, std::chrono::milliseconds(1)); }
BENCHMARK(RecordEventApart)->Iterations(1000)->UseManualTime();

/// 5,000 events, one request each, until the server has all of them.
void SendEvents(benchmark::State& state) {
    const TemporaryFolder folder;
    LoopbackServer server;
    server.expect(1);
    installLinuxPlatform(folder.path(), server.origin());
    startLibrary();
    server.wait();
    for (auto _ : state) {
        server.expect(kEvents);
        const auto processor = processorTime();
        const auto start = SteadyClock::now();
        for (int i = 0; i < kEvents; ++i) Vorlane::registerEventWithType("purchase", fiveKeys());
        server.wait();
        state.SetIterationTime(secondsSince(start));
        state.counters["cpu"] += processorTime() - processor;
    }
    Platform::shutdown();
    Platform::install(nullptr);
}
BENCHMARK(SendEvents)->Iterations(3)->UseManualTime();

/// The same requests by libcurl alone: prepared bodies, six connections.
void BareSendEvents(benchmark::State& state) {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    LoopbackServer server;
    BareSender sender(server.origin() + "/0.8/register_app_event?app_key=0123456789abcdef0123456789abcdef");
    const auto body =
        "payload=" + stringByAddingPercentEncoding(eventBody().dump(), vl_formURLEncodingAllowedCharacterSet());
    for (auto _ : state) {
        const auto processor = processorTime();
        const auto start = SteadyClock::now();
        sender.send(body, kEvents);
        state.SetIterationTime(secondsSince(start));
        state.counters["cpu"] += processorTime() - processor;
    }
}
BENCHMARK(BareSendEvents)->Iterations(3)->UseManualTime();

}  // namespace

}  // namespace vorlane::benchmarks

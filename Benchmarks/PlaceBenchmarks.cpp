#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "Benchmarks/Support/HandFedBackEnd.h"
#include "Benchmarks/Support/Host.h"
#include "Benchmarks/Support/Process.h"
#include "Core/Startup/VLBootstrap.h"
#include "Geo/VLLocationService.h"
#include "Platform/CLBeaconRegion.h"
#include "Platform/CLLocationManager.h"
#include "Public/Vorlane.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane::benchmarks {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr const char* kUUID = "B9407F30-F5F8-466E-AFF9-25556B57FE6D";
constexpr double kLatitude = 59.9;
constexpr double kLongitude = 10.75;
// About 600 m: a significant change, but not far enough for a request of other regions.
constexpr double kAway = 0.0054;
// Beyond every region and every threshold.
constexpr double kFarAway = 0.1;

/// The answer with the regions: a row to the east, 1 km from each other.
std::string regionList(std::int64_t count, const std::string& prefix) {
    Array regions;
    for (std::int64_t i = 0; i < count; ++i) {
        regions.emplace_back(Dictionary{{"id", fmt::format("{}{}", prefix, i)},
                                        {"name", "A place"},
                                        {"latitude", kLatitude},
                                        {"longitude", kLongitude + 0.018 * static_cast<double>(i)},
                                        {"radius", 100},
                                        {"plotwise_id", "segment"}});
    }
    return Value(Dictionary{{"geo_regions", Value(std::move(regions))}}).dump();
}

/// Rules for one beacon each with the range "immediate", so that every rule is evaluated for every beacon.
std::string beaconConfiguration(std::int64_t count) {
    Array rules;
    for (std::int64_t i = 0; i < count; ++i) {
        rules.emplace_back(Dictionary{{"type", "message"},
                                      {"beacon_type", "ibeacon"},
                                      {"uuid", kUUID},
                                      {"major", 1},
                                      {"minor", i},
                                      {"priority", i % 7},
                                      {"alert_range", "immediate"},
                                      {"message_count", 3},
                                      {"time_period", 24},
                                      {"default_message", "Hello"}});
    }
    const Value beacon = Dictionary{
        {"beacon_data", Value(std::move(rules))}, {"auto_beacon_notify", true}, {"cooloff_period_minutes", 10}};
    return Value(Dictionary{{"services", Dictionary{{"beacon", true}}}, {"configs", Dictionary{{"beacon", beacon}}}})
        .dump();
}

std::string geoConfiguration() {
    const Value geo = Dictionary{{"polling_geostatechangeignore_timeperiod_s", 1e-6}};
    return Value(Dictionary{{"services", Dictionary{{"geo_regions", true}}},
                            {"configs", Dictionary{{"geo_regions", geo}}}})
        .dump();
}

/// An active application with an idle main queue.
class Scene {
public:
    explicit Scene(Answers answers)
        : backEnd_(std::make_shared<HandFedBackEnd>()),
          platform_(installOfflinePlatform(folder_.path(), std::move(answers), backEnd_)) {
        startLibrary();
        platform_->application()->didBecomeActive();
        runMainQueue();
    }
    ~Scene() {
        Platform::shutdown();
        Platform::install(nullptr);
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    /// Delivers a position, and runs the main queue until it is idle.
    void moveTo(double latitude, double longitude) {
        backEnd_->receive({{latitude, longitude}, 5, platform_->clock().now()});
        runMainQueue();
    }
    void runMainQueue() {
        while (platform_->poll() > 0) continue;
    }

    CLLocationManager& locationManager() { return *platform_->locationManager(); }
    std::size_t watchedRegions() { return locationManager().monitoredRegions().size(); }

private:
    const TemporaryFolder folder_;
    const std::shared_ptr<HandFedBackEnd> backEnd_;
    const std::shared_ptr<LinuxPlatform> platform_;
};

template <class Work>
void measure(benchmark::State& state, Work work) {
    const auto start = SteadyClock::now();
    work();
    state.SetIterationTime(std::chrono::duration<double>(SteadyClock::now() - start).count());
}

bool isSetUp(benchmark::State& state, bool holds) {
    if (!holds) state.SkipWithError("the scene could not be set up");
    return holds;
}

/// A position that the library receives, but that neither crosses a region nor leads to a request.
void LocationUpdate(benchmark::State& state) {
    const auto count = state.range(0);
    Scene scene({{"/config/", geoConfiguration()}, {"/geo/regions", regionList(count, "r")}});
    scene.moveTo(kLatitude - kAway, kLongitude);
    if (!isSetUp(state, scene.watchedRegions() == static_cast<std::size_t>(count))) return;
    bool isAway = false;
    for (auto _ : state) {
        isAway = !isAway;
        measure(state, [&] { scene.moveTo(kLatitude - kAway * (isAway ? 0.5 : 1.5), kLongitude); });
    }
}
BENCHMARK(LocationUpdate)->Arg(1)->Arg(5)->Arg(10)->Arg(20)->Iterations(2000)->UseManualTime();

/// Enters a region and leaves it again: the record is written and the content requested.
void CrossIntoRegion(benchmark::State& state) {
    const auto count = state.range(0);
    Scene scene({{"/config/", geoConfiguration()}, {"/geo/regions", regionList(count, "r")}});
    scene.moveTo(kLatitude - kAway, kLongitude);
    if (!isSetUp(state, scene.watchedRegions() == static_cast<std::size_t>(count))) return;
    for (auto _ : state) {
        measure(state, [&] { scene.moveTo(kLatitude, kLongitude); });
        scene.moveTo(kLatitude - kAway, kLongitude);
    }
}
BENCHMARK(CrossIntoRegion)->Arg(1)->Arg(5)->Arg(10)->Arg(20)->Iterations(300)->UseManualTime();

/// Moves far away from the last request: the answer contains other regions, which replace the monitored ones.
void ChangeRegions(benchmark::State& state) {
    const auto count = state.range(0);
    // The answers are selected by path, and the position is in the query. So the user changes too.
    Scene scene({{"/config/", geoConfiguration()},
                 {"/first/geo/regions", regionList(count, "a")},
                 {"/second/geo/regions", regionList(count, "b")}});
    bool isFirst = false;
    for (auto _ : state) {
        isFirst = !isFirst;
        Vorlane::setTrackingId(isFirst ? "first" : "second");
        scene.runMainQueue();
        measure(state, [&] { scene.moveTo(kLatitude + (isFirst ? kFarAway : -kFarAway), kLongitude); });
    }
    isSetUp(state, scene.watchedRegions() == static_cast<std::size_t>(count));
}
BENCHMARK(ChangeRegions)->Arg(1)->Arg(5)->Arg(10)->Arg(20)->Iterations(50)->UseManualTime();

/// Beacons in range, none of them near enough for its message.
std::vector<CLBeacon> beacons(std::int64_t count) {
    std::vector<CLBeacon> list;
    for (std::int64_t i = 0; i < count; ++i) {
        CLBeacon beacon{kUUID, 1, static_cast<std::uint16_t>(i), CLProximity::Far, 10 + static_cast<double>(i)};
        list.push_back(std::move(beacon));
    }
    return list;
}

void RangingResult(benchmark::State& state) {
    Scene scene({{"/config/", beaconConfiguration(state.range(1))}});
    const auto region = std::make_shared<CLBeaconRegion>(kUUID, fmt::format("{}_1_0", kUUID));
    const auto delegate = VLBootstrap::bootstrapWithURLs(Vorlane::getURLs())->getComponent<VLLocationService>();
    const auto heard = beacons(state.range(0));
    if (!isSetUp(state, scene.watchedRegions() > 0)) return;
    for (auto _ : state) {
        measure(state, [&] {
            delegate->didRangeBeacons(scene.locationManager(), heard, region);
            scene.runMainQueue();
        });
    }
}
BENCHMARK(RangingResult)
    ->Args({1, 1})
    ->Args({10, 1})
    ->Args({50, 1})
    ->Args({1, 100})
    ->Args({10, 100})
    ->Args({50, 10})
    ->Args({50, 100})
    ->Iterations(300)
    ->UseManualTime();

}  // namespace

}  // namespace vorlane::benchmarks

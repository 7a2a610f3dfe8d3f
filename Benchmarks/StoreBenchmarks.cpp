#include <benchmark/benchmark.h>

#include <string>

#include "Benchmarks/Support/BareFile.h"
#include "Benchmarks/Support/Host.h"
#include "Benchmarks/Support/Process.h"
#include "Core/Base/VLSettings.h"
#include "Platform/NSFileManager.h"
#include "Public/Vorlane.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane::benchmarks {

namespace {

constexpr int kWrites = 1000;

/// The settings file of an application that ran before.
class Store {
public:
    Store() {
        installOfflinePlatform(folder_.path());
        startLibrary();
        Platform::current().application()->didBecomeActive();
        Platform::current().application()->didEnterBackground();
    }
    ~Store() {
        Platform::shutdown();
        Platform::install(nullptr);
    }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    std::string file() const { return folder_.path() + "/VLLibSettings.plist"; }

private:
    TemporaryFolder folder_;
};

void ChangeSetting(benchmark::State& state) {
    const Store store;
    VLSettings settings(Platform::current().device());
    std::int64_t count = 0;
    for (auto _ : state) settings.setSessionCount(++count);
}
BENCHMARK(ChangeSetting)->Iterations(kWrites)->UseRealTime();

void BareFileWrite(benchmark::State& state) {
    const Store store;
    const auto bytes = NSFileManager::contentsAtPath(store.file()).value();
    for (auto _ : state) writeBareFile(bytes, store.file());
}
BENCHMARK(BareFileWrite)->Iterations(kWrites)->UseRealTime();

}  // namespace

}  // namespace vorlane::benchmarks

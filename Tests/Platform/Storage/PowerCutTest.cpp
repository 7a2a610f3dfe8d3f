#include <fmt/format.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Core/Base/VLSettings.h"
#include "Platform/CLCircularRegion.h"
#include "Platform/Internal/PropertyListFile.h"
#include "Platform/Internal/StorageFlusher.h"
#include "Platform/Internal/StorageFolder.h"
#include "Platform/MonitoredRegions.h"
#include "Platform/NSFileManager.h"
#include "Simulator/Platform/SimulatedPhone.h"
#include "Tests/Platform/FailingSystemCalls.h"
#include "Tests/Platform/Storage/RecordedDisk.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

namespace {

constexpr const char* kSettings = "VLLibSettings.plist";
constexpr const char* kRegions = "VLMonitoredRegions.plist";
constexpr const char* kSchedule = "VLScheduledNotifications.plist";
constexpr const char* kFiles[] = {kSettings, kRegions, kSchedule};

/// What a file held after each change, the oldest first. Null: there is no file.
using History = std::vector<Value>;

/// A day of changes to three stores, with every operation on their files recorded.
class PowerCutTest : public TemporaryFolderTest {
protected:
    PowerCutTest() {
        std::filesystem::create_directory(day);
        SimulatedPhone::Options options;
        options.documentsFolder = day;
        phone = std::make_shared<SimulatedPhone>(options);
        Platform::install(phone);
        for (const auto* name : kFiles) histories[name] = {Value()};
        disk = std::make_unique<RecordedDisk>(day);
    }
    ~PowerCutTest() override {
        disk.reset();
        Platform::install(nullptr);
    }

    /// Adds what the files hold now to their histories.
    void note() {
        for (const auto* name : kFiles) {
            const auto reading = PropertyListFile(day + "/" + name).read();
            const bool isThere = reading.status == PropertyListFile::Status::Contents;
            ASSERT_TRUE(isThere || reading.status == PropertyListFile::Status::Absent);
            auto value = isThere ? reading.contents : Value();
            if (histories[name].back() != value) histories[name].push_back(std::move(value));
        }
    }

    void perform(const std::function<void()>& change) {
        change();
        note();
    }

    /// From here on, no power cut may lose what has changed so far.
    void flush() {
        std::map<std::string, std::size_t> reached;
        for (const auto& [name, history] : histories) reached[name] = history.size() - 1;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        ASSERT_TRUE(phone->storage().waitUntilIdle(deadline));
        promises.emplace_back(disk->operationCount(), reached);
    }

    /// The oldest state of the file that a cut behind that many operations may leave.
    std::size_t oldestAllowed(const std::string& name, std::size_t count) const {
        std::size_t oldest = 0;
        for (const auto& [operations, reached] : promises) {
            if (operations <= count) oldest = reached.at(name);
        }
        return oldest;
    }

    /// Whether the file is in one of its states, no older than promised, also when it is read a second time.
    void check(const std::string& name, std::size_t count, const std::string& cut) {
        const auto& history = histories[name];
        Value first;
        for (const bool isFirst : {true, false}) {
            PropertyListFile file(after + "/" + name);
            const auto reading = file.read();
            ASSERT_NE(reading.status, PropertyListFile::Status::Unreadable) << cut;
            const auto value = reading.status == PropertyListFile::Status::Contents ? reading.contents : Value();
            if (isFirst) {
                first = value;
            } else {
                ASSERT_EQ(value, first) << cut << ": " << name;
            }
        }
        for (std::size_t i = oldestAllowed(name, count); i < history.size(); ++i) {
            if (history[i] == first) return;
        }
        FAIL() << cut << ": " << name << " holds " << first.dump();
    }

    void cutEverywhere() {
        using Cut = RecordedDisk::Cut;
        const Cut::Bytes kinds[] = {Cut::Bytes::All, Cut::Bytes::None, Cut::Bytes::Half, Cut::Bytes::Zeros};
        for (std::size_t count = 0; count <= disk->operationCount(); ++count) {
            for (const auto bytes : kinds) {
                std::vector<Cut> cuts{{Cut::Names::None, bytes, 0}, {Cut::Names::All, bytes, 0}};
                for (unsigned seed = 0; seed < 2; ++seed) {
                    cuts.push_back({Cut::Names::Some, bytes, seed + 7 * static_cast<unsigned>(count)});
                }
                for (const auto& cut : cuts) {
                    disk->restore(count, cut, after);
                    const auto description =
                        fmt::format("cut behind {} operations, names {}, bytes {}, seed {}", count,
                                    static_cast<int>(cut.names), static_cast<int>(cut.bytes), cut.seed);
                    for (const auto* name : kFiles) check(name, count, description);
                    if (HasFatalFailure()) return;
                }
            }
        }
    }

    const std::string day = path("day");
    const std::string after = path("after");
    std::shared_ptr<SimulatedPhone> phone;
    std::unique_ptr<RecordedDisk> disk;
    std::map<std::string, History> histories;
    // After how many operations which states of the files are durable.
    std::vector<std::pair<std::size_t, std::map<std::string, std::size_t>>> promises;
};

std::shared_ptr<CLRegion> circle(const std::string& identifier) {
    return std::make_shared<CLCircularRegion>(CLLocationCoordinate2D{59.9, 10.7}, 100, identifier);
}

TEST_F(PowerCutTest, NoCutOfADayLosesFlushedChanges) {
    std::unique_ptr<VLSettings> settings;
    perform([&] { settings = std::make_unique<VLSettings>(phone->device()); });
    MonitoredRegions regions(day + "/" + kRegions);
    PropertyListFile schedule(day + "/" + kSchedule);
    perform([&] { settings->deviceId(); });
    perform([&] { settings->trackingId(); });
    flush();
    for (int round = 0; round < 3; ++round) {
        const auto number = std::to_string(round);
        perform([&] { settings->setPhash("phash " + number); });
        perform([&] { regions.add(circle(number)); });
        // The flush of these runs beside the changes below.
        phone->storage().flush();
        perform([&] { schedule.write(Dictionary{{"notifications", Array(static_cast<std::size_t>(round), "due")}}); });
        perform([&] {
            const VLSettings::Step step;
            settings->setSessionCount(round);
            settings->setTotalSessionLength(10 * round);
            settings->setPhash(std::nullopt);
        });
        perform([&] { regions.setState(number, CLRegionState::Inside); });
        if (round % 2 == 1) flush();
        perform([&] { regions.remove(number); });
    }
    perform([&] { settings->setTrackingId("anna"); });
    perform([&] { EXPECT_TRUE(schedule.remove()); });
    flush();
    perform([&] { settings->setTrackingId("ben"); });
    ASSERT_GT(disk->operationCount(), 100U);
    cutEverywhere();
}

TEST_F(PowerCutTest, NoCutWithoutHardLinksLosesFlushedChanges) {
    FailingSystemCalls calls;
    calls.failLinks();
    VLSettings settings(phone->device());
    note();
    for (const auto* id : {"anna", "ben", "carla"}) {
        perform([&] { settings.setTrackingId(id); });
        if (id != std::string("ben")) flush();
    }
    perform([&] { settings.setTrackingId("dora"); });
    cutEverywhere();
}

}  // namespace

}  // namespace vorlane

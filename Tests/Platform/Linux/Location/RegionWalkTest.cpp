#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <random>

#include "Platform/CLCircularRegion.h"
#include "Platform/Linux/Location/LinuxLocationManager.h"
#include "Tests/Platform/Linux/Location/HandDrivenBackEnd.h"
#include "Tests/Platform/Linux/Location/TestPlaces.h"
#include "Tests/Platform/Linux/Loop/ClockedQueue.h"
#include "Tests/Platform/RecordingLocationDelegate.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

namespace {

using Events = std::vector<std::string>;
using State = CLRegionState;

/// A circle on a line: the distance of its centre from the start of the line, and its radius, in metres.
struct Circle {
    double position = 0;
    double radius = 0;

    bool operator==(const Circle&) const = default;
};

/// A fix on the same line.
struct Fix {
    double position = 0;
    double accuracy = 0;
};

/// What a location manager has to report, written as plainly as possible.
class ReferenceModel {
public:
    void start(const std::string& identifier, const Circle& circle) {
        const auto found = regions_.find(identifier);
        const bool isKnown =
            found != regions_.end() && found->second.circle == circle && found->second.state != State::Unknown;
        if (!isKnown) regions_[identifier] = {circle, lastFix_ ? sideOf(circle, *lastFix_, 0) : State::Unknown};
    }
    void stop(const std::string& identifier) { regions_.erase(identifier); }
    void restart() { lastFix_.reset(); }

    /// Returns the events, ordered by identifier.
    Events receive(const Fix& fix) {
        Events events;
        if (fix.accuracy < 0) return events;
        lastFix_ = fix;
        for (auto& [identifier, region] : regions_) {
            const auto before = region.state;
            if (before == State::Unknown) region.state = sideOf(region.circle, fix, 0);
            if (before == State::Inside) region.state = sideOf(region.circle, fix, fix.accuracy);
            const double margin = std::min(fix.accuracy, region.circle.radius / 2);
            if (before == State::Outside) region.state = sideOf(region.circle, fix, -margin);
            const bool hasEntered = before == State::Outside && region.state == State::Inside;
            const bool hasLeft = before == State::Inside && region.state == State::Outside;
            if (hasEntered) events.insert(events.end(), {"enter " + identifier, "state 1 " + identifier});
            if (hasLeft) events.insert(events.end(), {"exit " + identifier, "state 2 " + identifier});
        }
        return events;
    }

private:
    struct Region {
        Circle circle;
        State state = State::Unknown;
    };

    static State sideOf(const Circle& circle, const Fix& fix, double margin) {
        return std::abs(circle.position - fix.position) <= circle.radius + margin ? State::Inside : State::Outside;
    }

    std::map<std::string, Region> regions_;
    std::optional<Fix> lastFix_;
};

/// Drives a location manager and the model with the same random steps.
class RegionStepTest : public TemporaryFolderTest {
protected:
    explicit RegionStepTest(int seed = 0) : generator(static_cast<std::mt19937::result_type>(seed)) { launch(); }

    /// Starts a process. Only the file remains of the previous one.
    void launch() {
        history += "launch\n";
        queue = std::make_shared<ClockedQueue>(clock);
        backEnd = std::make_shared<HandDrivenBackEnd>();
        manager = LinuxLocationManager::managerWith({queue, clock, backEnd, path("regions.plist")});
        delegate = std::make_shared<RecordingLocationDelegate>();
        manager->setDelegate(delegate);
        model.restart();
        reported();
    }

    void start(const std::string& identifier, const Circle& circle) {
        history += fmt::format("start {} at {} within {}\n", identifier, circle.position, circle.radius);
        manager->startMonitoringForRegion(
            std::make_shared<CLCircularRegion>(placeAt(circle.position), circle.radius, identifier));
        EXPECT_EQ(reported(), Events{"started " + identifier});
        model.start(identifier, circle);
    }
    void stop(const std::string& identifier) {
        history += "stop " + identifier + "\n";
        manager->stopMonitoringForRegion(std::make_shared<CLCircularRegion>(kCentre, 1, identifier));
        EXPECT_EQ(reported(), Events{});
        model.stop(identifier);
    }
    Events receive(const Fix& fix) {
        backEnd->listener.lock()->positionsArrived({{placeAt(fix.position), fix.accuracy, 0}});
        history += fmt::format("fix at {} within {}\n", fix.position, fix.accuracy);
        const auto events = reported();
        EXPECT_EQ(events, model.receive(fix)) << history;
        return events;
    }

    double random(double from, double to) { return std::uniform_real_distribution<double>(from, to)(generator); }
    int choice(int count) { return std::uniform_int_distribution<int>(0, count - 1)(generator); }

    void takeStep() {
        const std::string identifier = std::to_string(choice(4));
        switch (choice(12)) {
            case 0:
            case 1:
                return start(identifier, circles[static_cast<std::size_t>(choice(6))]);
            case 2:
                return stop(identifier);
            case 3:
                return launch();
            default:
                position = std::clamp(position + random(-250, 250), 0.0, 1000.0);
                count(receive({position, choice(10) == 0 ? -1 : random(0, 80)}));
        }
    }
    void count(const Events& events) {
        for (const auto& event : events) {
            if (event.starts_with("enter")) ++entries;
            if (event.starts_with("exit")) ++exits;
        }
    }

    static CLLocationCoordinate2D placeAt(double metres) {
        return {kCentre.latitude + metres / kMetresInDegree, kCentre.longitude};
    }

    const std::vector<Circle> circles{{200, 100}, {250, 150}, {500, 30}, {500, 300}, {800, 190}, {1000, 1}};
    std::mt19937 generator;
    std::string history;
    double position = 500;
    int entries = 0;
    int exits = 0;
    ReferenceModel model;
    std::shared_ptr<SetClock> clock = std::make_shared<SetClock>();
    std::shared_ptr<ClockedQueue> queue;
    std::shared_ptr<HandDrivenBackEnd> backEnd;
    std::shared_ptr<RecordingLocationDelegate> delegate;
    std::shared_ptr<LinuxLocationManager> manager;

private:
    Events reported() {
        queue->advance(0);
        auto calls = delegate->calls();
        delegate->clear();
        return calls;
    }
};

class RegionWalkTest : public RegionStepTest, public ::testing::WithParamInterface<int> {
protected:
    RegionWalkTest() : RegionStepTest(GetParam()) {}
};

TEST_P(RegionWalkTest, ReportsWhatTheModelReports) {
    for (int i = 0; i < 400 && !HasFailure(); ++i) takeStep();
    EXPECT_GT(entries, 0);
    EXPECT_GT(exits, 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RegionWalkTest, ::testing::Range(1, 21));

// A start, a restart and a fix outside, in every order. Only a restart between the fix and the start loses the state.
TEST_F(RegionStepTest, EveryOrderOfStepsKeepsTheEntry) {
    std::vector<int> order{0, 1, 2};
    do {
        for (const int step : order) {
            if (step == 0) start("1", {500, 100});
            if (step == 1) launch();
            if (step == 2) receive({700, 5});
        }
        const bool isStateLost = order == std::vector<int>{2, 1, 0};
        EXPECT_EQ(receive({500, 5}), isStateLost ? Events{} : (Events{"enter 1", "state 1 1"}));
        stop("1");
        launch();
    } while (std::ranges::next_permutation(order).found);
}

}  // namespace

}  // namespace vorlane

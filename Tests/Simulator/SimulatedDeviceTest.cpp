#include <stdlib.h>
#include <time.h>

#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

/// Sets the process's time zone for one test.
class SimulatedDeviceTest : public SimulatedPhoneTest {
protected:
    SimulatedDeviceTest() {
        if (const char* zone = getenv("TZ")) before_ = zone;
    }
    ~SimulatedDeviceTest() override {
        before_ ? setenv("TZ", before_->c_str(), 1) : unsetenv("TZ");
        tzset();
    }

    NSTimeZone zoneWith(const char* variable) {
        setenv("TZ", variable, 1);
        return phone().device()->localTimeZone();
    }

    static constexpr double kJuly = 1'689'000'000.0;

private:
    std::optional<std::string> before_;
};

TEST_F(SimulatedDeviceTest, ReportsFixedValues) {
    EXPECT_EQ(phone().device()->systemName(), "iOS");
    EXPECT_EQ(phone().device()->systemVersion(), "12.0");
    EXPECT_EQ(phone().device()->machine(), "Simulated1,1");
    EXPECT_EQ(phone().device()->preferredLanguages(), std::vector<std::string>{"en-GB"});
}

TEST_F(SimulatedDeviceTest, PreferencesMayBeChanged) {
    phone().simulatedDevice().setPreferredLanguages({"nb-NO", "en"});
    phone().simulatedDevice().setLocalTimeZone({"Asia/Kolkata", 19800});
    EXPECT_EQ(phone().device()->preferredLanguages(), (std::vector<std::string>{"nb-NO", "en"}));
    EXPECT_EQ(phone().device()->localTimeZone().name, "Asia/Kolkata");
    EXPECT_EQ(phone().device()->localTimeZone().secondsFromGMT, 19800);
}

TEST_F(SimulatedDeviceTest, ZoneIsTheProcesssAtThePhonesTime) {
    EXPECT_EQ(zoneWith("CET-1CEST,M3.5.0/2,M10.5.0/3").secondsFromGMT, 3600);
    phone().setClock(kJuly);
    EXPECT_EQ(zoneWith("CET-1CEST,M3.5.0/2,M10.5.0/3").secondsFromGMT, 7200);
    EXPECT_EQ(zoneWith("EST5").secondsFromGMT, -18000);
}

TEST_F(SimulatedDeviceTest, ZoneIsNamedByTZOrItsAbbreviation) {
    EXPECT_EQ(zoneWith("Europe/Oslo").name, "Europe/Oslo");
    EXPECT_EQ(zoneWith(":America/Argentina/Buenos_Aires").name, "America/Argentina/Buenos_Aires");
    EXPECT_EQ(zoneWith("UTC").name, "UTC");
    EXPECT_EQ(zoneWith("CET-1CEST,M3.5.0/2,M10.5.0/3").name, "CET");
    EXPECT_EQ(zoneWith("").name, "UTC");
}

TEST_F(SimulatedDeviceTest, TimesBeyondTheCalendarHaveAZone) {
    for (const double time : {-1e300, 1e300}) {
        phone().setClock(time);
        EXPECT_EQ(zoneWith("UTC").secondsFromGMT, 0);
    }
}

}  // namespace

}  // namespace vorlane

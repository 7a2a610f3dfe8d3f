// Interstitial placements by number and by name.

#include <gtest/gtest.h>

#include <limits>
#include <map>

#include "Public/VLErrorDomains.h"
#include "Tests/Notifications/InterstitialsTest.h"

namespace vorlane {

namespace {

/// The names of all placements.
std::map<std::uint64_t, std::string> placementNames() {
    std::map<std::uint64_t, std::string> names{{0, "App Open"}, {1, "Feedback"}, {2, "Push Open"}, {3, "Store Launch"}};
    for (std::uint64_t i = 0; i < 9; ++i) names[4 + i] = std::string("Placement ") + "123456789"[i];
    for (std::uint64_t i = 0; i < 26; ++i) names[13 + i] = std::string("Placement ") + "ABCDEFGHIJKLMNOPQRSTUVWXYZ"[i];
    return names;
}

std::string invalidPlacementLine(const std::string& number) {
    return "Interstitial: ignored an attempt to display invalid placement with raw value: \"" + number + "\".";
}

class VLInterstitialPlacementTest : public InterstitialsTest {
protected:
    void askByNumber(std::uint64_t number, Outcome& kept) {
        service->presentInterstitialWithPlacement(static_cast<VLInterstitialPlacement>(number), makeInterstitial(),
                                                  false, keepIn(kept));
    }

    Outcome outcome;
};

TEST_F(VLInterstitialPlacementTest, OnlyNumbers0To38HaveNames) {
    const auto names = placementNames();
    for (std::uint64_t number = 0; number < 100; ++number) {
        const auto name = VLInterstitialService::stringForPlacement(static_cast<VLInterstitialPlacement>(number));
        const auto expected = names.find(number);
        EXPECT_EQ(name, expected == names.end() ? std::nullopt : std::optional(expected->second)) << number;
    }
    EXPECT_EQ(VLInterstitialService::stringForPlacement(
                  static_cast<VLInterstitialPlacement>(std::numeric_limits<std::uint64_t>::max())),
              std::nullopt);
}

TEST_F(VLInterstitialPlacementTest, ThePublicPlacementsHaveTheirNumbers) {
    EXPECT_EQ(VLInterstitialService::stringForPlacement(VLInterstitialPlacement::Placement9), "Placement 9");
    EXPECT_EQ(static_cast<int>(VLInterstitialPlacement::Placement9), 12);
    EXPECT_EQ(VLInterstitialService::stringForPlacement(VLInterstitialPlacement::PlacementM), "Placement M");
    EXPECT_EQ(VLInterstitialService::stringForPlacement(VLInterstitialPlacement::PlacementZ), "Placement Z");
    EXPECT_EQ(static_cast<int>(VLInterstitialPlacement::PlacementZ), 38);
}

TEST_F(VLInterstitialPlacementTest, EachNumberRequestsItsPlacementOrFails) {
    const auto names = placementNames();
    session().alwaysAnswer("/interstitial/", 200, "{}");
    for (std::uint64_t number = 0; number < 40; ++number) {
        const auto before = session().requests("/interstitial/").size();
        Outcome result;
        askByNumber(number, result);
        EXPECT_EQ(result.calls, 0) << number;
        phone().settle();
        if (const auto name = names.find(number); name != names.end()) {
            ASSERT_EQ(session().requests("/interstitial/").size(), before + 1) << number;
            const auto path = session().lastRequest("/interstitial/").request.URL.path();
            EXPECT_EQ(stringByRemovingPercentEncoding(path), "/K/T/interstitial/" + name->second);
            EXPECT_TRUE(path.ends_with(pathOf(name->second))) << path;
            expectNothing(result);
        } else {
            EXPECT_EQ(session().requests("/interstitial/").size(), before) << number;
            expectError(result, VLErrorDomainInterstitial, 0);
        }
    }
}

TEST_F(VLInterstitialPlacementTest, AnInvalidPlacementIsReportedAndLogged) {
    askByNumber(39, outcome);
    phone().settle();
    expectError(outcome, "vorlane.sdk.interstitial", 0);
    EXPECT_EQ(outcome.error->localizedDescription(), "Could not display invalid placement with raw value 39");
    EXPECT_EQ(log().count(invalidPlacementLine("39"), VLLogLevel::Error), 1);
}

TEST_F(VLInterstitialPlacementTest, TheLargestNumberIsPrintedUnsigned) {
    askByNumber(std::numeric_limits<std::uint64_t>::max(), outcome);
    phone().settle();
    EXPECT_EQ(outcome.error->localizedDescription(),
              "Could not display invalid placement with raw value 18446744073709551615");
    EXPECT_EQ(log().count(invalidPlacementLine("18446744073709551615"), VLLogLevel::Error), 1);
}

}  // namespace

}  // namespace vorlane

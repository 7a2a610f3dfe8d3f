#pragma once

#include <cstdint>

namespace vorlane {

/// The places in an application where the service may show an interstitial.
enum class VLInterstitialPlacement : std::uint64_t {
    AppOpen = 0,
    Feedback = 1,
    PushOpen = 2,
    StoreLaunch = 3,
    Placement1 = 4,
    Placement2,
    Placement3,
    Placement4,
    Placement5,
    Placement6,
    Placement7,
    Placement8,
    Placement9,
    PlacementA = 13,
    PlacementB,
    PlacementC,
    PlacementD,
    PlacementE,
    PlacementF,
    PlacementG,
    PlacementH,
    PlacementI,
    PlacementJ,
    PlacementK,
    PlacementL,
    PlacementM,
    PlacementN,
    PlacementO,
    PlacementP,
    PlacementQ,
    PlacementR,
    PlacementS,
    PlacementT,
    PlacementU,
    PlacementV,
    PlacementW,
    PlacementX,
    PlacementY,
    PlacementZ = 38
};

}  // namespace vorlane

#include "Simulator/Demo/Chapters.h"

namespace vorlane::demo {

std::vector<Chapter> allChapters() {
    return {{"A notification launches the application", playLaunch},
            {"The application reports events", playEvents},
            {"The application keeps tags", playTags},
            {"Another user signs in", playAnotherUser},
            {"Background, foreground, termination", playAwayAndBack},
            {"Notifications", playNotifications},
            {"Launched again without a network", playWithoutNetwork},
            {"Interstitials and permissions", playInterstitials},
            {"The inbox", playInbox},
            {"A walk through three geofences, past two beacons", playWalk}};
}

}  // namespace vorlane::demo

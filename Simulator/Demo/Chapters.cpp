#include "Simulator/Demo/Chapters.h"

namespace vorlane::demo {

std::vector<Chapter> allChapters() {
    return {{"A notification launches the application", playLaunch},
            {"The application reports events", playEvents},
            {"The application keeps tags", playTags},
            {"Another user signs in", playAnotherUser},
            {"Away, back, and ended", playAwayAndBack},
            {"Notifications come and go", playNotifications},
            {"Launched again without a network", playWithoutNetwork},
            {"Greeted, and asked for permission", playInterstitials},
            {"The inbox fills, here and elsewhere", playInbox},
            {"A walk through three geofences, past two beacons", playWalk}};
}

}  // namespace vorlane::demo

#include "Simulator/Demo/Chapters.h"

namespace vorlane::demo {

std::vector<Chapter> allChapters() {
    return {{"A notification launches the application", playLaunch},
            {"The application reports events", playEvents},
            {"The application keeps tags", playTags},
            {"Another user signs in", playAnotherUser},
            {"Away, back, and ended", playAwayAndBack},
            {"Launched again without a network", playWithoutNetwork},
            {"The inbox fills, here and elsewhere", playInbox}};
}

}  // namespace vorlane::demo

#pragma once

#include <vector>

#include "Simulator/Demo/Stage.h"

namespace vorlane::demo {

/// One part of the day.
struct Chapter {
    const char* title;
    void (*play)(Stage& stage);
};

/// All chapters in order. Add a new chapter as a file of its own and a line here.
std::vector<Chapter> allChapters();

void playLaunch(Stage& stage);
void playEvents(Stage& stage);
void playTags(Stage& stage);
void playAnotherUser(Stage& stage);
void playAwayAndBack(Stage& stage);
void playNotifications(Stage& stage);
void playWithoutNetwork(Stage& stage);
void playInterstitials(Stage& stage);
void playInbox(Stage& stage);
void playWalk(Stage& stage);

}  // namespace vorlane::demo

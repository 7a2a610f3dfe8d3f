#include "Simulator/Demo/Chapters.h"

namespace vorlane::demo {

void playAwayAndBack(Stage& stage) {
    const auto firstSession = stage.lastPayload("sessionStart")["sid"];
    stage.wait(94.7);
    stage.play("the application goes to the background", {{"do", "state"}, {"to", "background"}});
    const auto firstEnd = stage.lastPayload("sessionEnd");
    stage.promise("the first session lasted 94 s, which is the average",
                  firstEnd["session_length"] == Value(94) && firstEnd["average_session_length"] == Value(94));
    stage.promise("the end still belongs to that session and its notification",
                  firstEnd["sid"] == firstSession && firstEnd["phash"] == Value("welcome-42"));

    stage.wait(600);
    stage.play("the user comes back", {{"do", "state"}, {"to", "foreground"}});
    stage.play("the application becomes active", {{"do", "state"}, {"to", "active"}});
    const auto second = stage.lastPayload("sessionStart");
    stage.promise("the second session has a new id and no phash",
                  second["sid"] != firstSession && second["phash"] == Value(""));

    stage.wait(30.2);
    stage.play("the application is terminated", {{"do", "state"}, {"to", "terminate"}});
    const auto secondEnd = stage.lastPayload("sessionEnd");
    stage.promise("the second session lasted 30 s, and the average is 62 s",
                  secondEnd["session_length"] == Value(30) && secondEnd["average_session_length"] == Value(62));
    const auto settings = stage.settings();
    stage.promise("the phone counts two sessions of 124 s in all",
                  settings["VLSessionCount"] == Value(2) && settings["VLTotalSessionLength"] == Value(124));
    stage.switchOff();
}

}  // namespace vorlane::demo

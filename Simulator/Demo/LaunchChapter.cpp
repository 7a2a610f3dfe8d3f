#include "Simulator/Demo/Chapters.h"

namespace vorlane::demo {

void playLaunch(Stage& stage) {
    stage.service().put("config/" + Stage::appKey(),
                        Dictionary{{"services", Dictionary{{"rich_inbox", true}}},
                                   {"configs", Dictionary{{"rich_inbox", Dictionary{{"sync_time_limit_s", 60}}}}}});
    stage.switchOn(Stage::Network::Available);
    stage.play("launch, opened from a notification",
               {{"do", "launch"},
                {"preset", "development"},
                {"launchOptions",
                 Dictionary{{"remote", Dictionary{{"p", "welcome-42"}, {"aps", Dictionary{{"alert", "Hello"}}}}}}}});
    stage.promise("the configuration is fetched once", stage.service().requests("config").size() == 1);
    stage.promise("the launch stores the notification's phash", stage.settings()["VLPhash"] == Value("welcome-42"));

    stage.play("the application becomes active", {{"do", "state"}, {"to", "active"}});
    const auto start = stage.lastPayload("sessionStart");
    stage.promise("the session start carries the phash", start["phash"] == Value("welcome-42"));
    stage.promise("the session start names the application",
                  start["app_key"] == Value(Stage::appKey()) && start["app_name"] == Value("Demo"));
    stage.promise("a session starts with the length 0", start["session_length"] == Value(0));
    stage.promise("the library has created a user id",
                  start["tracking_id"].is_string() && start["tracking_id"].get<std::string>().starts_with("@VL@"));
}

}  // namespace vorlane::demo

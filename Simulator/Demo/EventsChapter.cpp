#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Demo/Chapters.h"

namespace vorlane::demo {

void playEvents(Stage& stage) {
    const Dictionary data{{"item", "running shoes"}, {"size", 42}, {"price", 129.95}, {"gift", false}};
    stage.call("event \"Viewed\" with a label", "registerEventWithType:label:", {"Viewed", "shoes"});
    stage.promise("a label is sent as a string", stage.lastPayload("registerEvent")["event_label"] == Value("shoes"));
    stage.promise("an event carries the notification that opened the application",
                  stage.lastPayload("registerEvent")["phash"] == Value("welcome-42"));

    stage.call("event \"Purchase\" with data", "registerEventWithType:data:", {"Purchase", data});
    stage.promise("data is sent as an object", stage.lastPayload("registerEvent")["event_label"] == Value(data));

    stage.call("event \"Shared\" of another notification",
               "registerEventWithType:label:phash:", {"Shared", "shoes", "other-7"});
    stage.promise("an event's own phash takes precedence",
                  stage.lastPayload("registerEvent")["phash"] == Value("other-7"));

    const auto events = stage.service().get("events");
    const auto* stored = arrayForKey(events.get_ref<const Dictionary&>(), "events");
    stage.promise("the service stored three events", stored && stored->size() == 3);
}

}  // namespace vorlane::demo

#include "Simulator/Demo/Chapters.h"

namespace vorlane::demo {

void playAnotherUser(Stage& stage) {
    const auto before = stage.phone().call("trackingId");
    stage.call("the user becomes anna@example", "setTrackingId:", {"anna@example"});
    const auto change = stage.lastPayload("changeTrackingId");
    stage.promise("the service receives the new and the previous user",
                  change["tracking_id"] == Value("anna@example") && change["prev_tracking_id"] == before);

    const auto requests = stage.service().requests().size();
    stage.call("the same user is set again", "setTrackingId:", {"anna@example"});
    stage.promise("an unchanged user is not reported again", stage.service().requests().size() == requests);

    stage.call("event \"Signed in\"", "registerEventWithType:label:", {"Signed in", nullptr});
    stage.promise("events are the new user's",
                  stage.lastPayload("registerEvent")["tracking_id"] == Value("anna@example"));
}

}  // namespace vorlane::demo

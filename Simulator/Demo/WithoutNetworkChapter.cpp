#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Demo/Chapters.h"

namespace vorlane::demo {

void playWithoutNetwork(Stage& stage) {
    const auto requests = stage.service().requests().size();
    stage.switchOn(Stage::Network::Unavailable);
    bool isCached = false;
    bool isMissing = false;
    stage.phone().perform({{"do", "launch"}, {"preset", "development"}});
    stage.phone().settle();
    for (const auto& event : stage.phone().events("log")) {
        const auto message = stringForKey(event, "message").value_or("");
        isCached |= message == "Couldn't fetch config from remote server, config loaded from local cache instead.";
        isMissing |= message.starts_with("SDK cannot launch");
    }
    stage.play("launch, without a network", {{"do", "settle"}});
    stage.promise("the second launch uses the cached configuration", isCached && !isMissing);

    stage.play("the application becomes active", {{"do", "state"}, {"to", "active"}});
    const auto failed = stage.call("read a tag", "getTag:completionHandler:", {"size"});
    stage.promise("without a network a handler receives the transport's error",
                  failed.size() == 2 && failed[0].is_null() && failed[1]["domain"] == Value("NSURLErrorDomain"));
    stage.promise("the user is still anna@example", stage.phone().call("trackingId") == Value("anna@example"));
    stage.promise("no request reached the service", stage.service().requests().size() == requests);
    stage.switchOff();
}

}  // namespace vorlane::demo

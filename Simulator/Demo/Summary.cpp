#include "Simulator/Demo/Summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"

namespace vorlane::demo {

namespace {

/// The service's stored objects of this name.
Array stored(Stage& stage, const std::string& name) {
    const auto answer = stage.service().get(name);
    const auto* found = answer.is_object() ? arrayForKey(answer.get_ref<const Dictionary&>(), name) : nullptr;
    return found ? *found : Array();
}

void tellRequests(Stage& stage) {
    std::map<std::string, int> counts;
    const auto requests = stage.service().requests();
    for (const auto& request : requests) ++counts[request["endpoint"].get<std::string>()];
    stage.transcript().line(fmt::format("\nRequests: {}", requests.size()));
    for (const auto& [endpoint, count] : counts)
        stage.transcript().line(fmt::format("  {:<20} {:>3}", endpoint, count));
}

void tellSessions(Stage& stage) {
    stage.transcript().line("\nSessions that ended");
    for (const auto& session : stored(stage, "sessions")) {
        if (session["kind"] != Value("end")) continue;
        stage.transcript().line(
            fmt::format("  user {}, {} s, average so far {} s", vl_description(session["trackingId"]),
                        vl_description(session["sessionLength"]), vl_description(session["averageSessionLength"])));
    }
}

void tellTotals(Stage& stage) {
    const auto events = stored(stage, "events").size();
    const auto tags = stored(stage, "tags").size();
    const auto visits = stored(stage, "beaconSessions").size();
    stage.transcript().line(fmt::format("\nStored: {} events, {} tags, {} visits to beacons", events, tags, visits));
}

}  // namespace

bool tellSummary(Stage& stage) {
    tellRequests(stage);
    tellSessions(stage);
    tellTotals(stage);
    stage.transcript().line("\nPromises");
    for (const auto& promise : stage.promises()) {
        stage.transcript().line(fmt::format("  {:<7} {}", promise.isKept ? "ok" : "FAILED", promise.text));
    }
    const auto& promises = stage.promises();
    const auto kept =
        std::count_if(promises.begin(), promises.end(), [](const Promise& promise) { return promise.isKept; });
    stage.transcript().line(fmt::format("\n{} of {} promises kept", kept, promises.size()));
    return kept == static_cast<std::ptrdiff_t>(promises.size()) && !promises.empty();
}

}  // namespace vorlane::demo

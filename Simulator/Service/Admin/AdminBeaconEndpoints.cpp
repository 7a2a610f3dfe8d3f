#include "Simulator/Service/Admin/AdminBeaconEndpoints.h"

#include <string>

#include "Simulator/Service/Admin/AdminQuery.h"
#include "Simulator/Service/Endpoints/BeaconPattern.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Store/BeaconStore.h"
#include "Simulator/Service/Store/StoreFilter.h"

namespace vorlane::service {
namespace {

BeaconPattern patternOf(const EndpointCall& call) {
    return BeaconPattern::fromTexts(call.parameters.at("uuid"), call.parameters.at("major"),
                                    call.parameters.at("minor"));
}

ServiceResponse listContent(BeaconStore& store, const EndpointCall& call) {
    return ServiceResponse::json(Value(Dictionary{{"beaconContent", Value(store.allContent(appKeyOf(call)))}}));
}

ServiceResponse setContent(BeaconStore& store, const EndpointCall& call) {
    store.setContent(appKeyOf(call), patternOf(call), LocalMessage::fromPayload(jsonObject(call.request.body)));
    return ServiceResponse::ok();
}

ServiceResponse removeContent(BeaconStore& store, const EndpointCall& call) {
    if (store.removeContent(appKeyOf(call), patternOf(call))) return ServiceResponse::ok();
    return ServiceResponse::error(404, "these beacons have no content of their own");
}

ServiceResponse removeAllContent(BeaconStore& store, const EndpointCall& call) {
    store.removeAllContent(appKeyOf(call));
    return ServiceResponse::ok();
}

StoreFilter filterOf(const EndpointCall& call) {
    requireKnownNames(call.request, {"appKey", "trackingId"});
    return {call.request.queryValue("appKey"), call.request.queryValue("trackingId")};
}

ServiceResponse listSessions(BeaconStore& store, const EndpointCall& call) {
    return ServiceResponse::json(Value(Dictionary{{"beaconSessions", Value(store.sessions(filterOf(call)))}}));
}

ServiceResponse listSummaries(BeaconStore& store, const EndpointCall& call) {
    return ServiceResponse::json(Value(Dictionary{{"beaconSummaries", Value(store.summaries(filterOf(call)))}}));
}

}  // namespace

void addAdminBeaconEndpoints(EndpointRouter& router, BeaconStore& store) {
    const auto add = [&router, &store](const char* name, const char* method, const char* path,
                                       ServiceResponse (*answer)(BeaconStore&, const EndpointCall&)) {
        router.addAdministrative(name, method, path,
                                 [&store, answer](EndpointCall& call) { return answer(store, call); });
    };
    const char* allContent = "/_admin/beaconContent/{appKey}";
    const char* content = "/_admin/beaconContent/{appKey}/{uuid}/{major}/{minor}";
    add("listBeaconContent", "GET", allContent, listContent);
    add("removeAllBeaconContent", "DELETE", allContent, removeAllContent);
    add("setBeaconContent", "PUT", content, setContent);
    add("removeBeaconContent", "DELETE", content, removeContent);
    add("beaconSessions", "GET", "/_admin/beaconSessions", listSessions);
    add("beaconSummaries", "GET", "/_admin/beaconSummaries", listSummaries);
}

}  // namespace vorlane::service

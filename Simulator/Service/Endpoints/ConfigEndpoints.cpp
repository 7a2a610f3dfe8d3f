#include "Simulator/Service/Endpoints/ConfigEndpoints.h"

#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Store/ServiceStore.h"

namespace vorlane::service {
namespace {

Dictionary defaultConfiguration() {
    const Value services(
        Dictionary{{"geo_regions", false}, {"beacon", false}, {"permission", false}, {"rich_inbox", false}});
    const Value inbox(Dictionary{{"sync_time_limit_s", 30}});
    return {{"services", services}, {"configs", Value(Dictionary{{"rich_inbox", inbox}})}};
}

ServiceResponse config(ServiceStore& store, EndpointCall& call) {
    call.appKey = call.parameters.at("appKey");
    call.trackingId = call.request.queryValue("trackingId").value_or("");
    if (!call.trackingId.empty()) store.noteUser(call.appKey, call.trackingId);
    return ServiceResponse::json(Value(configurationInForce(store, call.appKey)));
}

}  // namespace

void addConfigEndpoints(EndpointRouter& router, ServiceStore& store) {
    router.add("config", "GET", "/config/application/ios/{appKey}",
               [&store](EndpointCall& call) { return config(store, call); });
}

Dictionary configurationInForce(ServiceStore& store, const std::string& appKey) {
    auto document = store.configuration(appKey);
    return document ? *document : defaultConfiguration();
}

}  // namespace vorlane::service

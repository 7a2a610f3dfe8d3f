#include "Simulator/Service/AdminStoreEndpoints.h"

#include <string>

#include "Simulator/Service/AdminQuery.h"
#include "Simulator/Service/ConfigEndpoints.h"
#include "Simulator/Service/EndpointCall.h"
#include "Simulator/Service/EndpointRouter.h"
#include "Simulator/Service/RequestPayload.h"
#include "Simulator/Service/ServiceStore.h"
#include "Simulator/Service/StoreFilter.h"

namespace vorlane::service {
namespace {

using List = Array (ServiceStore::*)(const StoreFilter&);

/// Lists under `name` what the store has of it.
void addList(EndpointRouter& router, ServiceStore& store, const std::string& name, List list) {
    router.addAdministrative(name, "GET", "/_admin/" + name, [&store, name, list](EndpointCall& call) {
        requireKnownNames(call.request, {"appKey", "trackingId"});
        const StoreFilter filter{call.request.queryValue("appKey"), call.request.queryValue("trackingId")};
        return ServiceResponse::json(Value(Dictionary{{name, Value((store.*list)(filter))}}));
    });
}

ServiceResponse configuration(ServiceStore& store, const EndpointCall& call) {
    return ServiceResponse::json(Value(configurationInForce(store, call.parameters.at("appKey"))));
}

ServiceResponse setConfiguration(ServiceStore& store, const EndpointCall& call) {
    store.setConfiguration(call.parameters.at("appKey"), jsonObject(call.request.body));
    return ServiceResponse::ok();
}

ServiceResponse removeConfiguration(ServiceStore& store, const EndpointCall& call) {
    store.removeConfiguration(call.parameters.at("appKey"));
    return ServiceResponse::ok();
}

}  // namespace

void addAdminStoreEndpoints(EndpointRouter& router, ServiceStore& store) {
    addList(router, store, "devices", &ServiceStore::devices);
    addList(router, store, "sessions", &ServiceStore::sessions);
    addList(router, store, "events", &ServiceStore::events);
    addList(router, store, "tags", &ServiceStore::tags);
    const char* path = "/_admin/config/{appKey}";
    router.addAdministrative("configuration", "GET", path,
                             [&store](EndpointCall& call) { return configuration(store, call); });
    router.addAdministrative("setConfiguration", "PUT", path,
                             [&store](EndpointCall& call) { return setConfiguration(store, call); });
    router.addAdministrative("removeConfiguration", "DELETE", path,
                             [&store](EndpointCall& call) { return removeConfiguration(store, call); });
}

}  // namespace vorlane::service

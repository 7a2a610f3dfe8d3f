#include "Simulator/Service/Admin/AdminStoreEndpoints.h"

#include <string>

#include "Simulator/Service/Admin/AdminQuery.h"
#include "Simulator/Service/Endpoints/ConfigEndpoints.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Store/ServiceStore.h"
#include "Simulator/Service/Store/StoreFilter.h"

namespace vorlane::service {
namespace {

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
    addList(router, "devices", [&store](const StoreFilter& filter) { return store.devices(filter); });
    addList(router, "sessions", [&store](const StoreFilter& filter) { return store.sessions(filter); });
    addList(router, "events", [&store](const StoreFilter& filter) { return store.events(filter); });
    addList(router, "tags", [&store](const StoreFilter& filter) { return store.tags(filter); });
    const char* path = "/_admin/config/{appKey}";
    router.addAdministrative("configuration", "GET", path,
                             [&store](EndpointCall& call) { return configuration(store, call); });
    router.addAdministrative("setConfiguration", "PUT", path,
                             [&store](EndpointCall& call) { return setConfiguration(store, call); });
    router.addAdministrative("removeConfiguration", "DELETE", path,
                             [&store](EndpointCall& call) { return removeConfiguration(store, call); });
}

}  // namespace vorlane::service

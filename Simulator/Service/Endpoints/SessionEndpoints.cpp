#include "Simulator/Service/Endpoints/SessionEndpoints.h"

#include <optional>
#include <string>
#include <utility>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Store/ServiceStore.h"
#include "Simulator/Service/Store/SessionReport.h"

namespace vorlane::service {
namespace {

SessionReport readSession(const char* kind, EndpointCall& call) {
    SessionReport session;
    session.kind = kind;
    session.time = call.request.time;
    session.payload = formPayload(call.request);
    const auto& payload = session.payload;
    session.appKey = call.appKey = requiredText(payload, "app_key");
    session.trackingId = call.trackingId = requiredText(payload, "tracking_id");
    session.deviceId = requiredText(payload, "device_id");
    session.sid = stringForKey(payload, "sid");
    session.sessionLength = integerForKey(payload, "session_length");
    session.averageSessionLength = integerForKey(payload, "average_session_length");
    session.phash = stringForKey(payload, "phash");
    session.prevTrackingId = stringForKey(payload, "prev_tracking_id");
    session.platform = stringForKey(payload, "platform");
    if (const auto* device = dictionaryForKey(payload, "device")) session.device = *device;
    return session;
}

EndpointRouter::Handler handlerFor(const char* kind, ServiceStore& store) {
    return [kind, &store](EndpointCall& call) {
        store.addSession(readSession(kind, call));
        return ServiceResponse::ok();
    };
}

ServiceResponse changeTrackingId(ServiceStore& store, EndpointCall& call) {
    const auto session = readSession("changeTrackingId", call);
    // A change needs the old tracking id.
    requiredText(session.payload, "prev_tracking_id");
    store.addSession(session);
    return ServiceResponse::ok();
}

}  // namespace

void addSessionEndpoints(EndpointRouter& router, ServiceStore& store) {
    router.add("sessionStart", "POST", "/0.8/session", handlerFor("start", store));
    router.add("sessionEnd", "POST", "/0.8/session/end", handlerFor("end", store));
    router.add("changeTrackingId", "POST", "/0.8/session/tracking_id",
               [&store](EndpointCall& call) { return changeTrackingId(store, call); });
}

}  // namespace vorlane::service

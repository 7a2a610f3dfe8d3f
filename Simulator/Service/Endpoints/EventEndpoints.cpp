#include "Simulator/Service/Endpoints/EventEndpoints.h"

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Store/EventReport.h"
#include "Simulator/Service/Store/ServiceStore.h"

namespace vorlane::service {
namespace {

Value labelOf(const Dictionary& payload) {
    const auto* label = valueForKey(payload, "event_label");
    if (!label || !(label->is_string() || label->is_object()))
        throw MalformedRequest("\"event_label\" is neither a string nor an object");
    return *label;
}

EventReport readEvent(EndpointCall& call) {
    EventReport event;
    event.time = call.request.time;
    event.payload = formPayload(call.request);
    // The key in the query may be an older one; the payload's key applies.
    event.appKey = call.appKey = requiredText(event.payload, "app_key");
    event.trackingId = call.trackingId = requiredText(event.payload, "tracking_id");
    event.deviceId = stringForKey(event.payload, "device_id");
    event.sid = stringForKey(event.payload, "sid");
    event.type = requiredText(event.payload, "event_type");
    event.label = labelOf(event.payload);
    event.phash = stringForKey(event.payload, "phash");
    return event;
}

}  // namespace

void addEventEndpoints(EndpointRouter& router, ServiceStore& store) {
    router.add("registerEvent", "POST", "/0.8/register_app_event", [&store](EndpointCall& call) {
        store.addEvent(readEvent(call));
        return ServiceResponse::ok();
    });
}

}  // namespace vorlane::service

#include "Simulator/Service/Endpoints/DeviceEndpoints.h"

#include <string>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Store/DeviceRegistration.h"
#include "Simulator/Service/Store/ServiceStore.h"

namespace vorlane::service {
namespace {

bool isRegistering(const Dictionary& payload) {
    const auto type = requiredText(payload, "type");
    if (type != "register" && type != "unregister")
        throw MalformedRequest("\"type\" is neither \"register\" nor \"unregister\"");
    return type == "register";
}

DeviceRegistration readRegistration(EndpointCall& call) {
    const auto payload = jsonPayload(call.request);
    DeviceRegistration registration;
    registration.time = call.request.time;
    registration.appKey = call.appKey = requiredText(payload, "appkey");
    registration.trackingId = call.trackingId = requiredText(payload, "trackingid");
    registration.deviceId = requiredText(payload, "device_id");
    registration.token = requiredText(payload, "devicetoken");
    registration.isRegistered = isRegistering(payload);
    registration.platform = stringForKey(payload, "platform");
    if (const auto* settings = dictionaryForKey(payload, "notification_settings.v2"))
        registration.notificationSettings = *settings;
    return registration;
}

}  // namespace

void addDeviceEndpoints(EndpointRouter& router, ServiceStore& store) {
    router.add("deviceRegistration", "POST", "/v1/device", [&store](EndpointCall& call) {
        store.registerDevice(readRegistration(call));
        return ServiceResponse::ok();
    });
}

}  // namespace vorlane::service

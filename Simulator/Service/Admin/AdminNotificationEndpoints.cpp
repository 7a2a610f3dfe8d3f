#include "Simulator/Service/Admin/AdminNotificationEndpoints.h"

#include <fmt/format.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSUUID+VLString.h"
#include "Simulator/Service/Admin/AdminQuery.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Store/NotificationStore.h"
#include "Simulator/Service/Store/PushReport.h"
#include "Simulator/Service/Store/ServiceStore.h"

namespace vorlane::service {
namespace {

ServiceResponse listCampaigns(NotificationStore& store, const EndpointCall& /*call*/) {
    Array campaigns;
    for (const auto& campaign : store.campaigns()) {
        auto description = campaign.asDictionary();
        description["token"] = campaign.token;
        campaigns.emplace_back(std::move(description));
    }
    return ServiceResponse::json(Value(Dictionary{{"campaigns", Value(std::move(campaigns))}}));
}

ServiceResponse setCampaign(NotificationStore& store, const EndpointCall& call) {
    store.setCampaign(Campaign::fromPayload(call.parameters.at("token"), jsonObject(call.request.body)));
    return ServiceResponse::ok();
}

ServiceResponse removeCampaign(NotificationStore& store, const EndpointCall& call) {
    if (store.removeCampaign(call.parameters.at("token"))) return ServiceResponse::ok();
    return ServiceResponse::error(404, "there is no such campaign");
}

/// Returns the part that the device's system reads. A push without an alert is silent.
Dictionary systemPart(const Dictionary& wish) {
    Dictionary part;
    if (valueForKey(wish, "alert")) {
        part["alert"] = requiredText(wish, "alert");
        part["sound"] = valueForKey(wish, "sound") ? requiredText(wish, "sound") : "default";
    } else {
        part["content-available"] = 1;
    }
    if (const auto* badge = valueForKey(wish, "badge")) {
        if (!badge->is_number_integer()) throw MalformedRequest("\"badge\" is not an integer");
        part["badge"] = *badge;
    }
    return part;
}

Dictionary dataOf(const Dictionary& wish) {
    const auto* data = valueForKey(wish, "data");
    if (!data) return {};
    if (!data->is_object()) throw MalformedRequest("\"data\" is not an object");
    for (const auto* taken : {"aps", "p"}) {
        if (data->contains(taken)) throw MalformedRequest(fmt::format("\"data\" has a \"{}\"", taken));
    }
    return data->get_ref<const Dictionary&>();
}

/// Returns `nullopt` for a push without an alert, which nobody can open, unless the operator sets a phash.
std::optional<std::string> phashOf(const Dictionary& wish) {
    if (valueForKey(wish, "phash")) return requiredText(wish, "phash");
    return valueForKey(wish, "alert") ? std::optional(vl_newUUIDString()) : std::nullopt;
}

std::optional<Dictionary> deviceOf(ServiceStore& store, const std::string& appKey, const std::string& deviceId) {
    for (const auto& device : store.devices({appKey, std::nullopt})) {
        if (device["deviceId"] == deviceId) return device.get_ref<const Dictionary&>();
    }
    return std::nullopt;
}

/// Composes the payload that the device would receive; the operator delivers it.
ServiceResponse composePush(ServiceStore& store, const EndpointCall& call) {
    const auto wish = jsonObject(call.request.body);
    requireKnownKeys(wish, {"appKey", "deviceId", "alert", "sound", "badge", "phash", "data"});
    const auto device = deviceOf(store, requiredText(wish, "appKey"), requiredText(wish, "deviceId"));
    if (!device) return ServiceResponse::error(404, "there is no such device");
    const auto token = stringForKey(*device, "token");
    if (!token || !boolForKey(*device, "registered").value_or(false))
        return ServiceResponse::error(409, "the device has no valid push token");

    PushReport push;
    push.time = call.request.time;
    push.appKey = device->at("appKey").get<std::string>();
    push.deviceId = device->at("deviceId").get<std::string>();
    push.trackingId = device->at("trackingId").get<std::string>();
    push.token = *token;
    push.phash = phashOf(wish);
    push.payload = dataOf(wish);
    push.payload["aps"] = Value(systemPart(wish));
    if (push.phash) push.payload["p"] = *push.phash;
    store.notifications().addPush(push);
    return ServiceResponse::json(
        Value(Dictionary{{"token", push.token}, {"trackingId", push.trackingId}, {"payload", Value(push.payload)}}),
        201);
}

}  // namespace

void addAdminNotificationEndpoints(EndpointRouter& router, ServiceStore& store) {
    addList(router, "splits", [&store](const StoreFilter& filter) { return store.notifications().splits(filter); });
    addList(router, "cancellations",
            [&store](const StoreFilter& filter) { return store.notifications().cancellations(filter); });
    addList(router, "pushes", [&store](const StoreFilter& filter) { return store.notifications().pushes(filter); });
    const auto add = [&router, &store](const char* name, const char* method, const char* path,
                                       ServiceResponse (*answer)(NotificationStore&, const EndpointCall&)) {
        router.addAdministrative(name, method, path,
                                 [&store, answer](EndpointCall& call) { return answer(store.notifications(), call); });
    };
    add("listCampaigns", "GET", "/_admin/campaigns", listCampaigns);
    add("setCampaign", "PUT", "/_admin/campaigns/{token}", setCampaign);
    add("removeCampaign", "DELETE", "/_admin/campaigns/{token}", removeCampaign);
    router.addAdministrative("composePush", "POST", "/_admin/pushes",
                             [&store](EndpointCall& call) { return composePush(store, call); });
}

}  // namespace vorlane::service

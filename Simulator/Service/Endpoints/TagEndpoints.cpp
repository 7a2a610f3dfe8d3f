#include "Simulator/Service/Endpoints/TagEndpoints.h"

#include <string>
#include <vector>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Store/ServiceStore.h"
#include "Simulator/Service/Store/Tag.h"

namespace vorlane::service {
namespace {

/// Reads an entry of an object of tags: its value, or an object with "value" and "type".
Tag namedTag(const std::string& name, const Value& value) {
    Dictionary payload = value.is_object() ? value.get_ref<const Dictionary&>() : Dictionary{{"value", value}};
    payload["name"] = name;
    return Tag::fromPayload(payload);
}

Tag listedTag(const Value& element) {
    if (!element.is_object()) throw MalformedRequest("an element of \"tags\" is not an object");
    return Tag::fromPayload(element.get_ref<const Dictionary&>());
}

std::vector<Tag> readTags(const Dictionary& payload) {
    const auto* batch = valueForKey(payload, "tags");
    if (!batch) return {Tag::fromPayload(payload)};
    std::vector<Tag> tags;
    if (batch->is_object()) {
        for (const auto& [name, value] : batch->get_ref<const Dictionary&>()) tags.push_back(namedTag(name, value));
    } else if (batch->is_array()) {
        for (const auto& element : *batch) tags.push_back(listedTag(element));
    } else {
        throw MalformedRequest("\"tags\" is neither a list nor an object");
    }
    return tags;
}

ServiceResponse getTag(ServiceStore& store, EndpointCall& call) {
    call.readUser();
    // An unknown user is not an HTTP error.
    if (!store.knowsUser(call.appKey, call.trackingId))
        return ServiceResponse::json({{"error", "tracking id not found"}});
    const auto tag = store.tag(call.appKey, call.trackingId, call.parameters.at("tagName"));
    return ServiceResponse::json({{"value", tag ? tag->readValue() : Value(nullptr)}});
}

ServiceResponse updateTag(ServiceStore& store, EndpointCall& call) {
    call.readUser();
    store.setTags(call.appKey, call.trackingId, readTags(jsonPayload(call.request)));
    return ServiceResponse::ok();
}

ServiceResponse deleteAllTags(ServiceStore& store, EndpointCall& call) {
    call.readUser();
    store.deleteTags(call.appKey, call.trackingId);
    return ServiceResponse::ok();
}

}  // namespace

void addTagEndpoints(EndpointRouter& router, ServiceStore& store) {
    // A tracking id or the name of a tag may contain slashes, which are not encoded in the path.
    const std::string user = "/api/apps/{appKey}/tracking/{trackingId*}";
    router.add("getTag", "GET", user + "/tag/{tagName*}", [&store](EndpointCall& call) { return getTag(store, call); });
    router.add("updateTag", "POST", user, [&store](EndpointCall& call) { return updateTag(store, call); });
    router.add("deleteAllTags", "DELETE", user + "/tag/*",
               [&store](EndpointCall& call) { return deleteAllTags(store, call); });
}

}  // namespace vorlane::service

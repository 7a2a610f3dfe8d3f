#include "Simulator/Service/Admin/AdminGeoEndpoints.h"

#include <fmt/format.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Admin/AdminQuery.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Store/GeoStore.h"

namespace vorlane::service {
namespace {

ServiceResponse listRegions(GeoStore& store, const EndpointCall& call) {
    Array list;
    for (const auto& region : store.regions(appKeyOf(call))) list.emplace_back(region.document);
    return ServiceResponse::json(Value(Dictionary{{"regions", Value(std::move(list))}}));
}

Region listedRegion(const Value& element) {
    if (!element.is_object()) throw MalformedRequest("an element of \"regions\" is not an object");
    return Region::fromPayload(element.get_ref<const Dictionary&>());
}

ServiceResponse setRegions(GeoStore& store, const EndpointCall& call) {
    const auto payload = jsonObject(call.request.body);
    const auto* list = arrayForKey(payload, "regions");
    if (!list) throw MalformedRequest("\"regions\" is missing or not a list");
    std::vector<Region> regions;
    std::set<std::string> ids;
    for (const auto& element : *list) {
        regions.push_back(listedRegion(element));
        const auto& id = regions.back().id;
        if (!ids.insert(id).second) throw MalformedRequest(fmt::format("the region \"{}\" is listed twice", id));
    }
    store.setRegions(appKeyOf(call), regions);
    return ServiceResponse::ok();
}

ServiceResponse removeRegions(GeoStore& store, const EndpointCall& call) {
    store.setRegions(appKeyOf(call), {});
    return ServiceResponse::ok();
}

ServiceResponse setRegion(GeoStore& store, const EndpointCall& call) {
    auto payload = jsonObject(call.request.body);
    const auto& id = call.parameters.at("id");
    payload.try_emplace("id", id);
    const auto region = Region::fromPayload(payload);
    if (region.id != id) throw MalformedRequest("\"id\" differs from the path");
    store.setRegion(appKeyOf(call), region);
    return ServiceResponse::ok();
}

ServiceResponse removeRegion(GeoStore& store, const EndpointCall& call) {
    if (store.removeRegion(appKeyOf(call), call.parameters.at("id"))) return ServiceResponse::ok();
    return ServiceResponse::error(404, "there is no such region");
}

ServiceResponse listContent(GeoStore& store, const EndpointCall& call) {
    return ServiceResponse::json(Value(Dictionary{{"geoContent", Value(store.allContent(appKeyOf(call)))}}));
}

const std::string& transitionOf(const EndpointCall& call) {
    const auto& transition = call.parameters.at("transition");
    if (transition != "enter" && transition != "exit")
        throw MalformedRequest("the transition is neither \"enter\" nor \"exit\"");
    return transition;
}

ServiceResponse setContent(GeoStore& store, const EndpointCall& call) {
    store.setContent(appKeyOf(call), call.parameters.at("segmentId"), transitionOf(call),
                     LocalMessage::fromPayload(jsonObject(call.request.body)));
    return ServiceResponse::ok();
}

ServiceResponse removeContent(GeoStore& store, const EndpointCall& call) {
    if (store.removeContent(appKeyOf(call), call.parameters.at("segmentId"), transitionOf(call)))
        return ServiceResponse::ok();
    return ServiceResponse::error(404, "the segment has no such content");
}

ServiceResponse removeAllContent(GeoStore& store, const EndpointCall& call) {
    store.removeAllContent(appKeyOf(call));
    return ServiceResponse::ok();
}

}  // namespace

void addAdminGeoEndpoints(EndpointRouter& router, GeoStore& store) {
    const auto add = [&router, &store](const char* name, const char* method, const char* path,
                                       ServiceResponse (*answer)(GeoStore&, const EndpointCall&)) {
        router.addAdministrative(name, method, path,
                                 [&store, answer](EndpointCall& call) { return answer(store, call); });
    };
    const char* regions = "/_admin/regions/{appKey}";
    const char* region = "/_admin/regions/{appKey}/{id*}";
    add("listRegions", "GET", regions, listRegions);
    add("setRegions", "PUT", regions, setRegions);
    add("removeRegions", "DELETE", regions, removeRegions);
    add("setRegion", "PUT", region, setRegion);
    add("removeRegion", "DELETE", region, removeRegion);
    const char* allContent = "/_admin/geoContent/{appKey}";
    const char* content = "/_admin/geoContent/{appKey}/{transition}/{segmentId*}";
    add("listGeoContent", "GET", allContent, listContent);
    add("removeAllGeoContent", "DELETE", allContent, removeAllContent);
    add("setGeoContent", "PUT", content, setContent);
    add("removeGeoContent", "DELETE", content, removeContent);
}

}  // namespace vorlane::service

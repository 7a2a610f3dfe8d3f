#include "Simulator/Service/Admin/AdminInterstitialEndpoints.h"

#include <string>
#include <utility>

#include "Simulator/Service/Endpoints/InterstitialEndpoints.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Store/Placement.h"
#include "Simulator/Service/Store/ServiceStore.h"

namespace vorlane::service {
namespace {

Dictionary describe(const Placement& placement) {
    return {{"placement", placement.name},
            {"html", placement.html.value_or("")},
            {"metadata", Value(placement.metadata)},
            {"phash", placement.phash ? Value(*placement.phash) : Value()}};
}

ServiceResponse noContent() { return ServiceResponse::error(404, "the placement has no content"); }

ServiceResponse list(ServiceStore& store, const EndpointCall& call) {
    Array interstitials;
    for (const auto& placement : placementsInForce(store, call.parameters.at("appKey")))
        interstitials.emplace_back(describe(placement));
    return ServiceResponse::json(Value(Dictionary{{"interstitials", Value(std::move(interstitials))}}));
}

std::optional<Placement> namedPlacement(ServiceStore& store, const EndpointCall& call) {
    return placementInForce(store, call.parameters.at("appKey"), call.parameters.at("placement"));
}

ServiceResponse get(ServiceStore& store, const EndpointCall& call) {
    const auto placement = namedPlacement(store, call);
    return placement ? ServiceResponse::json(Value(describe(*placement))) : noContent();
}

ServiceResponse page(ServiceStore& store, const EndpointCall& call) {
    auto placement = namedPlacement(store, call);
    if (!placement) return noContent();
    ServiceResponse response;
    response.contentType = "text/html; charset=utf-8";
    response.body = std::move(*placement->html);
    return response;
}

ServiceResponse set(ServiceStore& store, const EndpointCall& call) {
    store.placements().setPlacement(
        call.parameters.at("appKey"),
        Placement::fromPayload(call.parameters.at("placement"), jsonObject(call.request.body)));
    return ServiceResponse::ok();
}

ServiceResponse remove(ServiceStore& store, const EndpointCall& call) {
    const auto placement = namedPlacement(store, call);
    if (!placement) return noContent();
    // Stored as removed, so that the sample page does not replace it.
    store.placements().setPlacement(call.parameters.at("appKey"), {placement->name, std::nullopt, {}, std::nullopt});
    return ServiceResponse::ok();
}

ServiceResponse restore(ServiceStore& store, const EndpointCall& call) {
    store.placements().removePlacements(call.parameters.at("appKey"));
    return ServiceResponse::ok();
}

}  // namespace

void addAdminInterstitialEndpoints(EndpointRouter& router, ServiceStore& store) {
    const auto add = [&router, &store](const char* name, const char* method, const char* path,
                                       ServiceResponse (*answer)(ServiceStore&, const EndpointCall&)) {
        router.addAdministrative(name, method, path,
                                 [&store, answer](EndpointCall& call) { return answer(store, call); });
    };
    const char* all = "/_admin/interstitials/{appKey}";
    const char* one = "/_admin/interstitials/{appKey}/{placement}";
    add("listInterstitials", "GET", all, list);
    add("restoreInterstitials", "DELETE", all, restore);
    add("getInterstitial", "GET", one, get);
    add("setInterstitial", "PUT", one, set);
    add("removeInterstitial", "DELETE", one, remove);
    add("interstitialPage", "GET", "/_admin/interstitials/{appKey}/{placement}/page", page);
}

}  // namespace vorlane::service

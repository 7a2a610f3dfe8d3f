#include "Simulator/Service/Admin/AdminEndpoints.h"

#include <fmt/format.h>

#include <string>
#include <utility>
#include <vector>

#include "Simulator/Service/Admin/AdminQuery.h"
#include "Simulator/Service/EngagementService.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestFilter.h"
#include "Simulator/Service/Http/RequestPayload.h"

namespace vorlane::service {
namespace {

constexpr double kUsualWait = 10;
constexpr double kLongestWait = 600;

ServiceResponse firstPage(const EngagementService& service) {
    ServiceResponse response;
    response.contentType = "text/plain; charset=utf-8";
    response.body = "Vorlane engagement service: a local stand-in for the hosted one.\n\nFor the operator:\n";
    std::string forApps = "\nFor apps:\n";
    for (const auto& endpoint : service.router().endpoints()) {
        auto& list = endpoint.isAdministrative ? response.body : forApps;
        list += fmt::format("  {:<7} {:<58} {}\n", endpoint.method, endpoint.pattern, endpoint.name);
    }
    response.body += forApps;
    return response;
}

RequestFilter requestFilter(const ServiceRequest& request) {
    requireKnownNames(request,
                      {"endpoint", "method", "path", "appKey", "trackingId", "status", "since", "waitFor", "timeout"});
    RequestFilter filter;
    filter.endpoint = request.queryValue("endpoint");
    filter.method = request.queryValue("method");
    filter.path = request.queryValue("path");
    filter.appKey = request.queryValue("appKey");
    filter.trackingId = request.queryValue("trackingId");
    filter.status = integerInQuery(request, "status");
    filter.since = integerInQuery(request, "since").value_or(0);
    return filter;
}

ServiceResponse listRequests(EngagementService& service, const ServiceRequest& request) {
    const auto filter = requestFilter(request);
    const auto count = static_cast<std::size_t>(integerInQuery(request, "waitFor").value_or(0));
    const auto seconds = numberInQuery(request, "timeout", kLongestWait).value_or(kUsualWait);
    const auto records = service.log().waitFor(count, filter, seconds);
    Array list;
    for (const auto& record : records) list.emplace_back(record->asDictionary());
    const bool isComplete = list.size() >= count;
    return ServiceResponse::json(Value(Dictionary{{"requests", Value(std::move(list))}, {"complete", isComplete}}));
}

ServiceResponse clearRequests(EngagementService& service) {
    service.log().clear();
    return ServiceResponse::ok();
}

ServiceResponse reset(EngagementService& service) {
    service.faults().removeAll();
    service.log().clear();
    service.store().clear();
    return ServiceResponse::ok();
}

ServiceResponse listFaults(EngagementService& service) {
    Array list;
    for (const auto& fault : service.faults().faults()) list.emplace_back(fault.asDictionary());
    return ServiceResponse::json(Value(Dictionary{{"faults", Value(std::move(list))}}));
}

ServiceResponse addFault(EngagementService& service, const ServiceRequest& request) {
    auto fault = Fault::fromDictionary(jsonObject(request.body));
    if (fault.endpoint != "*" && fault.endpoint != "unknown" && !service.router().hasName(fault.endpoint))
        throw MalformedRequest(fmt::format("there is no endpoint \"{}\"", fault.endpoint));
    return ServiceResponse::json(Value(service.faults().add(std::move(fault)).asDictionary()), 201);
}

ServiceResponse removeFaults(EngagementService& service, const ServiceRequest& request) {
    requireKnownNames(request, {"id", "endpoint"});
    const auto id = integerInQuery(request, "id");
    const auto endpoint = request.queryValue("endpoint");
    std::size_t removed = 0;
    if (id) removed = service.faults().removeWithId(*id);
    if (endpoint) removed += service.faults().removeWithEndpoint(*endpoint);
    if (!id && !endpoint) {
        service.faults().removeAll();
    } else if (removed == 0) {
        return ServiceResponse::error(404, "there is no such fault");
    }
    return ServiceResponse::ok();
}

}  // namespace

void addAdminEndpoints(EndpointRouter& router, EngagementService& service) {
    router.addAdministrative("firstPage", "GET", "/", [&service](EndpointCall&) { return firstPage(service); });
    router.addAdministrative("health", "GET", "/_admin/health", [](EndpointCall&) { return ServiceResponse::ok(); });
    router.addAdministrative("reset", "POST", "/_admin/reset", [&service](EndpointCall&) { return reset(service); });
    router.addAdministrative("listRequests", "GET", "/_admin/requests",
                             [&service](EndpointCall& call) { return listRequests(service, call.request); });
    router.addAdministrative("clearRequests", "DELETE", "/_admin/requests",
                             [&service](EndpointCall&) { return clearRequests(service); });
    router.addAdministrative("listFaults", "GET", "/_admin/faults",
                             [&service](EndpointCall&) { return listFaults(service); });
    router.addAdministrative("addFault", "POST", "/_admin/faults",
                             [&service](EndpointCall& call) { return addFault(service, call.request); });
    router.addAdministrative("removeFaults", "DELETE", "/_admin/faults",
                             [&service](EndpointCall& call) { return removeFaults(service, call.request); });
}

}  // namespace vorlane::service

#include "Simulator/Service/EngagementService.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <exception>
#include <utility>

#include "Simulator/Service/Admin/AdminBeaconEndpoints.h"
#include "Simulator/Service/Admin/AdminEndpoints.h"
#include "Simulator/Service/Admin/AdminGeoEndpoints.h"
#include "Simulator/Service/Admin/AdminInterstitialEndpoints.h"
#include "Simulator/Service/Admin/AdminMailboxEndpoints.h"
#include "Simulator/Service/Admin/AdminNotificationEndpoints.h"
#include "Simulator/Service/Admin/AdminStoreEndpoints.h"
#include "Simulator/Service/Endpoints/BeaconEndpoints.h"
#include "Simulator/Service/Endpoints/ConfigEndpoints.h"
#include "Simulator/Service/Endpoints/DeviceEndpoints.h"
#include "Simulator/Service/Endpoints/EventEndpoints.h"
#include "Simulator/Service/Endpoints/GeoEndpoints.h"
#include "Simulator/Service/Endpoints/InterstitialEndpoints.h"
#include "Simulator/Service/Endpoints/MailboxEndpoints.h"
#include "Simulator/Service/Endpoints/NotificationEndpoints.h"
#include "Simulator/Service/Endpoints/SessionEndpoints.h"
#include "Simulator/Service/Endpoints/TagEndpoints.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RecordedRequest.h"

namespace vorlane::service {
namespace {

ServiceResponse noSuchEndpoint(const EndpointRouter::Match& match) {
    if (match.otherMethods.empty()) return ServiceResponse::error(404, "there is no such endpoint");
    auto response = ServiceResponse::error(405, "the endpoint does not support this method");
    response.headers["Allow"] = fmt::format("{}", fmt::join(match.otherMethods, ", "));
    return response;
}

/// Returns the endpoint's answer; an exception becomes an error answer.
ServiceResponse answerOf(const EndpointRouter::Match& match, EndpointCall& call) {
    if (!match.endpoint) return noSuchEndpoint(match);
    if (const auto status = call.request.bodyFailure) return ServiceResponse::error(*status, "the body is unreadable");
    try {
        return match.endpoint->handler(call);
    } catch (const MalformedRequest& error) {
        return ServiceResponse::error(400, error.what());
    } catch (const std::exception& error) {
        return ServiceResponse::error(500, error.what());
    }
}

std::optional<int> sentStatus(const ServiceResponse& response) {
    using Delivery = ServiceResponse::Delivery;
    const bool isHTTP = response.delivery == Delivery::Whole || response.delivery == Delivery::Truncated;
    return isHTTP ? std::optional(response.status) : std::nullopt;
}

}  // namespace

EngagementService::EngagementService(const std::string& databasePath, RequestLog::Listener listener)
    : store_(databasePath), log_(std::move(listener)) {
    addSessionEndpoints(router_, store_);
    addEventEndpoints(router_, store_);
    addTagEndpoints(router_, store_);
    addConfigEndpoints(router_, store_);
    addDeviceEndpoints(router_, store_);
    addMailboxEndpoints(router_, store_);
    addAdminEndpoints(router_, *this);
    addAdminStoreEndpoints(router_, store_);
    addAdminInterstitialEndpoints(router_, store_);
    addInterstitialEndpoints(router_, store_);
    addAdminNotificationEndpoints(router_, store_);
    addNotificationEndpoints(router_, store_);
    addAdminGeoEndpoints(router_, store_.geo());
    addAdminBeaconEndpoints(router_, store_.beacons());
    addGeoEndpoints(router_, store_);
    addBeaconEndpoints(router_, store_);
    addAdminMailboxEndpoints(router_, store_.mailboxes());
}

ServiceResponse EngagementService::answer(const ServiceRequest& request) {
    auto match = router_.match(request);
    EndpointCall call{request, std::move(match.parameters), {}, {}};
    const bool isAdministrative = match.endpoint && match.endpoint->isAdministrative;
    return isAdministrative ? answerOf(match, call) : answerRecorded(match, call);
}

ServiceResponse EngagementService::answerRecorded(const EndpointRouter::Match& match, EndpointCall& call) {
    const std::string name = match.endpoint ? match.endpoint->name : "unknown";
    const auto fault = faults_.take(name);
    auto response = answerWithFault(match, call, fault);
    RecordedRequest record;
    record.endpoint = name;
    record.request = call.request;
    record.appKey = call.appKey;
    record.trackingId = call.trackingId;
    record.status = sentStatus(response);
    if (fault) record.fault = Value(fault->asDictionary());
    log_.add(std::move(record));
    if (fault && fault->seconds > 0 && stopSignal_.isRaisedWithin(fault->seconds))
        response.delivery = ServiceResponse::Delivery::None;
    return response;
}

ServiceResponse EngagementService::answerWithFault(const EndpointRouter::Match& match, EndpointCall& call,
                                                   const std::optional<Fault>& fault) const {
    if (!fault) return answerOf(match, call);
    auto response = fault->leavesEndpointAlone() ? answerOf(match, call) : ServiceResponse();
    fault->spoil(response);
    return response;
}

void EngagementService::stop() {
    stopSignal_.raise();
    log_.close();
}

}  // namespace vorlane::service

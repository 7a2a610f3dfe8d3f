#include "Simulator/Service/Admin/AdminMailboxEndpoints.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Admin/AdminQuery.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Store/MailboxMessage.h"
#include "Simulator/Service/Store/MailboxStore.h"

namespace vorlane::service {
namespace {

constexpr std::array<std::string_view, 16> kFields = {
    "appKey",          "trackingId",      "all",     "id",    "subject",  "html",    "label", "link", "phash",
    "backgroundColor", "foregroundColor", "cardUrl", "image", "metadata", "created", "end"};

/// So that a misspelt field does not go unnoticed.
void requireKnownFields(const Dictionary& payload) {
    for (const auto& [name, value] : payload) {
        if (std::find(kFields.begin(), kFields.end(), name) == kFields.end())
            throw MalformedRequest(fmt::format("unknown name \"{}\"", name));
    }
}

/// Returns `nullopt` for all users.
std::optional<std::string> recipientOf(const Dictionary& payload) {
    const auto* all = valueForKey(payload, "all");
    if (all && !all->is_boolean()) throw MalformedRequest("\"all\" is not a boolean");
    if (!all || !all->get<bool>()) return requiredText(payload, "trackingId");
    if (valueForKey(payload, "trackingId")) throw MalformedRequest("\"trackingId\" and \"all\" exclude each other");
    return std::nullopt;
}

ServiceResponse send(MailboxStore& mailboxes, const ServiceRequest& request) {
    const auto payload = jsonObject(request.body);
    requireKnownFields(payload);
    const auto recipient = recipientOf(payload);
    const auto sent = mailboxes.send(MailboxMessage::fromPayload(payload, request.time), recipient);
    if (!sent) return ServiceResponse::error(409, "the id was used before");
    return ServiceResponse::json(
        Value(Dictionary{{"id", sent->id}, {"phash", sent->phash}, {"recipients", sent->recipients}}), 201);
}

StoreFilter filterOf(const ServiceRequest& request) {
    return {request.queryValue("appKey"), request.queryValue("trackingId")};
}

ServiceResponse list(MailboxStore& mailboxes, const ServiceRequest& request) {
    requireKnownNames(request, {"appKey", "trackingId"});
    return ServiceResponse::json(Value(Dictionary{{"messages", Value(mailboxes.list(filterOf(request)))}}));
}

ServiceResponse remove(MailboxStore& mailboxes, const ServiceRequest& request) {
    requireKnownNames(request, {"appKey", "trackingId", "id"});
    const auto id = unsignedInQuery(request, "id");
    const auto removed = mailboxes.remove(filterOf(request), id);
    if (id && removed == 0) return ServiceResponse::error(404, "there is no such message");
    return ServiceResponse::ok();
}

}  // namespace

void addAdminMailboxEndpoints(EndpointRouter& router, MailboxStore& mailboxes) {
    const char* path = "/_admin/messages";
    router.addAdministrative("messages", "GET", path,
                             [&mailboxes](EndpointCall& call) { return list(mailboxes, call.request); });
    router.addAdministrative("sendMessage", "POST", path,
                             [&mailboxes](EndpointCall& call) { return send(mailboxes, call.request); });
    router.addAdministrative("removeMessages", "DELETE", path,
                             [&mailboxes](EndpointCall& call) { return remove(mailboxes, call.request); });
}

}  // namespace vorlane::service
